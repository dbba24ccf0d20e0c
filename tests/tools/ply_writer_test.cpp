// The PLY writer, byte for byte, and through the strict reader.
#include "ply_writer.h"

#include <gtest/gtest.h>

#include <cstring>

#include "mesh_filter.h"
#include "strict_ply_reader.h"

namespace zelto_cli {
namespace {

const char kHeaderStart[] =
    "ply\n"
    "format binary_little_endian 1.0\n"
    "comment zelto-mesh, metres, camera coordinates\n";

// A 2 x 2 grid: one cell, two triangles (Part 2.1's default split).
Mesh Square() {
  Mesh mesh;
  mesh.vertices = {0, 0, 1, 0.5f, 0, 1, 0, 0.5f, 1, 0.5f, 0.5f, 2};
  mesh.triangles = {0, 1, 2, 1, 3, 2};
  return mesh;
}

template <typename T>
T At(const std::string& bytes, size_t offset) {
  T value;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

TEST(PlyWriter, HeaderThenVerticesThenFaces) {
  const std::string bytes = EncodePly(Square());
  const std::string header = std::string(kHeaderStart) +
                             "element vertex 4\n"
                             "property float x\n"
                             "property float y\n"
                             "property float z\n"
                             "element face 2\n"
                             "property list uchar int vertex_indices\n"
                             "end_header\n";
  ASSERT_EQ(bytes.size(), header.size() + 4 * 12 + 2 * 13);
  EXPECT_EQ(bytes.substr(0, header.size()), header);
  const size_t body = header.size();
  EXPECT_EQ(At<float>(bytes, body + 12), 0.5f);      // vertex 1 x
  EXPECT_EQ(At<float>(bytes, body + 3 * 12 + 8), 2.0f);  // vertex 3 z
  const size_t faces = body + 4 * 12;
  EXPECT_EQ(static_cast<uint8_t>(bytes[faces]), 3);
  EXPECT_EQ(At<int32_t>(bytes, faces + 1), 0);
  EXPECT_EQ(At<int32_t>(bytes, faces + 5), 1);
  EXPECT_EQ(At<int32_t>(bytes, faces + 9), 2);
  EXPECT_EQ(static_cast<uint8_t>(bytes[faces + 13]), 3);
  EXPECT_EQ(At<int32_t>(bytes, faces + 14), 1);
  EXPECT_EQ(At<int32_t>(bytes, faces + 18), 3);
  EXPECT_EQ(At<int32_t>(bytes, faces + 22), 2);
}

TEST(PlyWriter, StrictReaderReadsBackTheMesh) {
  const Mesh mesh = Square();
  ZeltoCliTest::PlyMesh read;
  std::string error;
  ASSERT_TRUE(ZeltoCliTest::ReadStrictPly(EncodePly(mesh), &read, &error)) << error;
  EXPECT_EQ(read.vertices, mesh.vertices);
  EXPECT_EQ(read.triangles, mesh.triangles);
  EXPECT_EQ(read.comments, std::vector<std::string>{"zelto-mesh, metres, camera coordinates"});
}

TEST(PlyWriter, EmptyMeshIsAValidFile) {
  const std::string bytes = EncodePly(Mesh{});
  ZeltoCliTest::PlyMesh read;
  std::string error;
  ASSERT_TRUE(ZeltoCliTest::ReadStrictPly(bytes, &read, &error)) << error;
  EXPECT_TRUE(read.vertices.empty());
  EXPECT_TRUE(read.triangles.empty());
  EXPECT_NE(bytes.find("element vertex 0\n"), std::string::npos);
  EXPECT_NE(bytes.find("element face 0\n"), std::string::npos);
}

TEST(StrictPlyReader, RejectsATruncatedBody) {
  std::string bytes = EncodePly(Square());
  bytes.pop_back();
  ZeltoCliTest::PlyMesh read;
  std::string error;
  EXPECT_FALSE(ZeltoCliTest::ReadStrictPly(bytes, &read, &error));
  EXPECT_EQ(error, "body of 73 bytes, expected 74 for 4 vertices and 2 triangles");
}

TEST(StrictPlyReader, RejectsAnIndexOutOfRange) {
  Mesh mesh = Square();
  mesh.triangles[5] = 4;
  ZeltoCliTest::PlyMesh read;
  std::string error;
  EXPECT_FALSE(ZeltoCliTest::ReadStrictPly(EncodePly(mesh), &read, &error));
  EXPECT_EQ(error, "face 1 has index 4 outside 0..3");
}

TEST(StrictPlyReader, RejectsAnotherFormat) {
  std::string bytes = EncodePly(Square());
  bytes.replace(bytes.find("binary_little_endian"), 20, "binary_big_endian");
  ZeltoCliTest::PlyMesh read;
  std::string error;
  EXPECT_FALSE(ZeltoCliTest::ReadStrictPly(bytes, &read, &error));
  EXPECT_EQ(error, "expected 'format binary_little_endian 1.0', found 'format binary_big_endian 1.0'");
}

TEST(MeshFilter, DropsInvalidVerticesAndTheirTrianglesAndRenumbers) {
  Mesh mesh = Square();
  mesh.vertices[3 * 1 + 2] = kInvalidDepthMetres;  // vertex 1 at 32.001 m
  mesh.resetTriangle = true;
  const Mesh kept = WithoutInvalidDepth(mesh);
  EXPECT_EQ(kept.vertices, (std::vector<float>{0, 0, 1, 0, 0.5f, 1, 0.5f, 0.5f, 2}));
  EXPECT_TRUE(kept.triangles.empty());  // both triangles touch vertex 1
  EXPECT_TRUE(kept.resetTriangle);

  Mesh corner = Square();
  corner.vertices[3 * 0 + 2] = 32001.0f / 1000.0f;  // the builder's own arithmetic
  const Mesh kept_corner = WithoutInvalidDepth(corner);
  EXPECT_EQ(kept_corner.VertexCount(), 3);
  EXPECT_EQ(kept_corner.triangles, (std::vector<int32_t>{0, 2, 1}));  // (1, 3, 2) renumbered
}

TEST(MeshFilter, KeepsDepthsNextToTheMarker) {
  Mesh mesh = Square();
  mesh.vertices[2] = 32.0f;
  mesh.vertices[5] = 32.002f;
  EXPECT_EQ(WithoutInvalidDepth(mesh).triangles, mesh.triangles);
}

}  // namespace
}  // namespace zelto_cli
