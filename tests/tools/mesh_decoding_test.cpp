// Channel 0 of a mesh frame in both layouts of Part 2.1.
#include "mesh_decoding.h"

#include <gtest/gtest.h>

#include <cstring>

#include "mesh/mesh_frame_data.h"

namespace zelto_cli {
namespace {

template <typename T>
void Put(std::vector<uint8_t>* bytes, T value) {
  uint8_t raw[sizeof value];
  std::memcpy(raw, &value, sizeof value);
  bytes->insert(bytes->end(), raw, raw + sizeof value);
}

// Two vertices, one (degenerate) triangle, reset flag 1: 12*2 + 12*1 + 9 = 45 bytes.
std::vector<uint8_t> FlatBytes() {
  std::vector<uint8_t> bytes;
  Put<int32_t>(&bytes, 2);
  for (float value : {1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f}) Put(&bytes, value);
  Put<int32_t>(&bytes, 1);
  for (int32_t index : {0, 1, 1}) Put(&bytes, index);
  Put<uint8_t>(&bytes, 1);
  return bytes;
}

TEST(MeshDecoding, FlatLayout) {
  const std::vector<uint8_t> bytes = FlatBytes();
  ASSERT_EQ(bytes.size(), 45u);
  Mesh mesh;
  std::string error;
  ASSERT_TRUE(DecodeMesh(bytes.data(), bytes.size(), &mesh, &error)) << error;
  EXPECT_EQ(mesh.vertices, (std::vector<float>{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(mesh.triangles, (std::vector<int32_t>{0, 1, 1}));
  EXPECT_TRUE(mesh.resetTriangle);
  EXPECT_EQ(mesh.layout, MeshLayout::kFlat);
  EXPECT_STREQ(LayoutName(mesh.layout), "flat");
}

TEST(MeshDecoding, FlatLayoutWithNoTrianglesIsTwelveTimesVerticesPlusNine) {
  std::vector<uint8_t> bytes;
  Put<int32_t>(&bytes, 1);
  for (float value : {7.0f, 8.0f, 9.0f}) Put(&bytes, value);
  Put<int32_t>(&bytes, 0);
  Put<uint8_t>(&bytes, 0);
  Mesh mesh;
  std::string error;
  ASSERT_TRUE(DecodeMesh(bytes.data(), bytes.size(), &mesh, &error)) << error;
  EXPECT_EQ(mesh.VertexCount(), 1);
  EXPECT_EQ(mesh.TriangleCount(), 0);
  EXPECT_FALSE(mesh.resetTriangle);
}

TEST(MeshDecoding, ReferenceLayoutCopiesTheArraysBehindTheAddresses) {
  float vertices[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  int32_t triangles[] = {0, 1, 2};
  ZeltoMesh::MeshFrameData record;
  record.vertexCount = 3;
  record.vertices = vertices;
  record.triangleCount = 1;
  record.triangles = triangles;
  record.resetTriangle = 0;
  uint8_t bytes[28];
  std::memcpy(bytes, &record, sizeof bytes);
  Mesh mesh;
  std::string error;
  ASSERT_TRUE(DecodeMesh(bytes, sizeof bytes, &mesh, &error)) << error;
  vertices[0] = 100;  // the builder rewrites its arrays later; the copy stays
  EXPECT_EQ(mesh.vertices, (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(mesh.triangles, (std::vector<int32_t>{0, 1, 2}));
  EXPECT_FALSE(mesh.resetTriangle);
  EXPECT_EQ(mesh.layout, MeshLayout::kReference);
  EXPECT_STREQ(LayoutName(mesh.layout), "reference");
}

TEST(MeshDecoding, ReferenceLayoutWithANullArrayFails) {
  ZeltoMesh::MeshFrameData record;
  record.vertexCount = 3;
  uint8_t bytes[28];
  std::memcpy(bytes, &record, sizeof bytes);
  Mesh mesh;
  std::string error;
  EXPECT_FALSE(DecodeMesh(bytes, sizeof bytes, &mesh, &error));
  EXPECT_EQ(error, "reference layout with a null array");
}

TEST(MeshDecoding, FlatSizeThatDisagreesWithTheCountsFails) {
  std::vector<uint8_t> bytes = FlatBytes();
  bytes.push_back(0);
  Mesh mesh;
  std::string error;
  EXPECT_FALSE(DecodeMesh(bytes.data(), bytes.size(), &mesh, &error));
  EXPECT_EQ(error, "flat layout of 46 bytes: counts do not match the size");
  EXPECT_FALSE(DecodeMesh(bytes.data(), 8, &mesh, &error));
  EXPECT_EQ(error, "flat layout of 8 bytes: shorter than two counts and a flag");
  EXPECT_FALSE(DecodeMesh(nullptr, 0, &mesh, &error));
  EXPECT_EQ(error, "channel 0 has no data");
}

}  // namespace
}  // namespace zelto_cli
