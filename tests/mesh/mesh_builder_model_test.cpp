// The builder against the literal model of Part 2.1 on random images,
// levels, periods and layouts: the same bytes, frame after frame. This
// covers what the builder does differently from the spec's text (vector
// lanes, no temporaries, indices not rewritten where they already stand).
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "literal_mesh_model.h"
#include "mesh_harness.h"

namespace ZeltoTest {
namespace {

std::vector<uint8_t> RecordFlatBytes(const ZeltoMesh::MeshFrameData& record) {
  LiteralMesh mesh;
  mesh.vertexCount = record.vertexCount;
  mesh.triangleCount = record.triangleCount;
  mesh.vertices.assign(record.vertices, record.vertices + 3 * record.vertexCount);
  mesh.triangles.assign(record.triangles, record.triangles + 3 * record.triangleCount);
  mesh.resetTriangle = record.resetTriangle;
  return mesh.FlatBytes();
}

TEST(MeshBuilderModel, RandomFramesGiveTheLiteralModelsBytes) {
  std::mt19937 random(20240517);
  const auto uniform = [&random](int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
  };
  int comparedFrames = 0;
  int otherDiagonalFrames = 0;
  for (int sequence = 0; sequence < 60; ++sequence) {
    MeshHarness harness;
    LiteralMeshModel model;
    const Intrinsics k{static_cast<float>(uniform(0, 900)), static_cast<float>(uniform(1, 900)),
                       uniform(0, 400) / 4.0f, uniform(0, 400) / 4.0f};
    int32_t width = 0;
    int32_t height = 0;
    for (int frame = 0; frame < 8; ++frame) {
      // Settings change between frames, as property sets would.
      if (frame == 0 || uniform(0, 3) == 0) {
        const int32_t level = uniform(0, 4);
        const int32_t period = uniform(0, 3);
        harness.builder.meshReductionLevel = level;
        harness.builder.resetTrianglePeriod = period;
        model.meshReductionLevel = level;
        model.resetTrianglePeriod = period;
      }
      harness.flatRawData = uniform(0, 1) == 1;
      // The size stays for most frames, so that records are reused.
      if (frame == 0 || uniform(0, 4) == 0) {
        width = uniform(0, 41);
        height = uniform(0, 9);
      }
      std::vector<int16_t> depth(static_cast<size_t>(width) * height);
      // Smooth depths with steps, some invalid ones and a few negative.
      for (int16_t& d : depth) {
        const int kind = uniform(0, 9);
        d = static_cast<int16_t>(kind == 0 ? uniform(-20, 12) : kind == 1 ? uniform(800, 4000)
                                                                         : 1000 + uniform(0, 60));
      }
      const std::vector<int16_t> points = PointCloud(depth);
      const int16_t none = 0;  // an empty image still needs a point cloud
      const int16_t* cloud = points.empty() ? &none : points.data();
      const FillResult result = harness.FillFrom(cloud, width, height, k);
      const LiteralMesh expected = model.Build(cloud, width, height, k.fx, k.fy, k.cx, k.cy);
      ASSERT_TRUE(result.status.ok()) << result.status.message();
      const ZeltoMesh::MeshFrameData& record =
          harness.builder.frameCounter() % 2 == 1 ? harness.builder.first() : harness.builder.second();
      ASSERT_EQ(RecordFlatBytes(record), expected.FlatBytes())
          << "sequence " << sequence << " frame " << frame << " " << width << " x " << height;
      if (harness.flatRawData) {
        ASSERT_EQ(result.bytes, expected.FlatBytes()) << "sequence " << sequence << " frame " << frame;
      } else {
        ASSERT_EQ(result.bytes, ReferenceBytes(record));
      }
      ++comparedFrames;
      for (size_t cell = 0; cell + 5 < expected.triangles.size(); cell += 6) {
        if (expected.triangles[cell + 3] == expected.triangles[cell]) {
          ++otherDiagonalFrames;
          break;
        }
      }
    }
  }
  EXPECT_EQ(comparedFrames, 480);
  EXPECT_GT(otherDiagonalFrames, 20);  // the re-fit was exercised
}

}  // namespace
}  // namespace ZeltoTest
