// The builder against ReferenceMeshModel, the unoptimised per-vertex computation, frame after
// frame: on random images while settings, sizes, layouts and block alignments change, and on the
// redwood frames. Vector lanes and tails, indices rewritten only where a cell changes and vertices
// stored into the frame memory in place must all give the model's bytes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <utility>

#include "mesh_harness.h"
#include "support/redwood_checksums.h"
#include "support/redwood_frame.h"

namespace ZeltoTest {
namespace {

// The flat layout one vertex and one cell at a time, each float expression rounded
// as the builder must round it. Extents below 2^24 only: it has no overflow guards.
struct ReferenceMeshModel {
  int32_t level = 0;
  int32_t period = 4;
  int32_t frames = 0;
  int64_t otherDiagonals = 0;

  Bytes Build(const int16_t* cloud, int32_t width, int32_t height, ZeltoMesh::PinholeIntrinsics k) {
    const float step = static_cast<float>(level + 1);
    const auto nx = static_cast<int32_t>(std::ceil(static_cast<float>(width) / step));
    const auto ny = static_cast<int32_t>(std::ceil(static_cast<float>(height) / step));
    std::vector<float> vertices;
    for (int32_t v = 0; v < height; v += level + 1) {
      for (int32_t u = 0; u < width; u += level + 1) {
        const int16_t d = cloud[(int64_t{v} * width + u) * 3 + 2];
        const float z = d < 10 ? 32001.0f : static_cast<float>(d);
        vertices.push_back(((static_cast<float>(u) - k.cx) * (z / k.fx)) / 1000.0f);
        vertices.push_back(((static_cast<float>(v) - k.cy) * (z / k.fy)) / 1000.0f);
        vertices.push_back(z / 1000.0f);
      }
    }
    const bool reset = (period == 0 ? ++frames : ++frames % period) == 0;
    std::vector<int32_t> cells;
    for (int32_t b = 0; b + nx + 1 < nx * ny; ++b) {
      if (b % nx == nx - 1) continue;  // the last column starts no cell
      const float dA = std::fabs(vertices[3 * b + 2] - vertices[3 * (b + nx + 1) + 2]);
      const float dB = std::fabs(vertices[3 * (b + 1) + 2] - vertices[3 * (b + nx) + 2]);
      const bool other = reset && !(dA > dB + 0.05f) && dA + 0.05f < dB;
      otherDiagonals += other;
      cells.insert(cells.end(), {b, b + 1, other ? b + nx + 1 : b + nx, other ? b : b + 1});
      cells.insert(cells.end(), {b + nx + 1, b + nx});
    }
    const auto bytes = [](const auto& values) {  // little-endian like the layout
      const auto* data = reinterpret_cast<const uint8_t*>(values.data());
      return Bytes(data, data + values.size() * sizeof values[0]);
    };
    const std::vector<int32_t> counts = {nx * ny, static_cast<int32_t>(cells.size() / 3)};
    return zelto_test::Cat({bytes(std::vector<int32_t>{counts[0]}), bytes(vertices),
                            bytes(std::vector<int32_t>{counts[1]}), bytes(cells), Bytes{reset}});
  }
};

TEST(MeshBuilder, GivesTheModelsBytesOnRandomFramesWithChangingSettings) {
  std::mt19937 random(20240517);
  const auto uniform = [&random](int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
  };
  ReferenceMeshModel model;
  for (int sequence = 0; sequence < 60; ++sequence) {
    MeshHarness harness;
    model.frames = 0;
    harness.intrinsics = {float(uniform(0, 900)), float(uniform(1, 900)), uniform(0, 400) / 4.0f,
                          uniform(0, 400) / 4.0f};
    int32_t width = 0;
    int32_t height = 0;
    for (int frame = 0; frame < 8; ++frame) {
      if (frame == 0 || uniform(0, 3) == 0) {
        harness.builder.meshReductionLevel = model.level = uniform(0, 4);
        harness.builder.resetTrianglePeriod = model.period = uniform(0, 3);
      }
      harness.flatRawData = uniform(0, 1) == 1;
      harness.allocator.faults.misalignment = uint64_t{1} << uniform(0, 4) >> 1;  // 0, 1, 2, 4, 8
      if (frame == 0 || uniform(0, 4) == 0) {  // sizes mostly stay, so that records are reused
        // Now and then wide, so that many groups of cells change in one row.
        width = uniform(0, 5) == 0 ? uniform(260, 300) : uniform(0, 41);
        height = uniform(0, 9);
      } else if (uniform(0, 5) == 0) {
        std::swap(width, height);  // the same counts on a grid of other dimensions
      }
      std::vector<int16_t> depth(size_t(width) * size_t(height) + 1);  // never empty
      for (int16_t& d : depth) {  // smooth with steps, some invalid, a few negative
        const int kind = uniform(0, 9);
        d = int16_t(kind == 0   ? uniform(-20, 12)
                    : kind == 1 ? uniform(800, 4000)
                                : uniform(1000, 1060));
      }
      const std::vector<int16_t> cloud = PointCloud(depth);
      // The host's point cloud may start at an odd address (UBSan checks every load).
      const bool odd = uniform(0, 1) == 1;
      std::vector<unsigned char> shifted(2 * cloud.size() + 1);
      std::memcpy(shifted.data() + odd, cloud.data(), 2 * cloud.size());
      SCOPED_TRACE(testing::Message() << "sequence " << sequence << " frame " << frame << ": "
                                      << width << " x " << height << " level " << model.level
                                      << (odd ? ", odd address" : ""));
      const FillResult result =
          harness.Fill(reinterpret_cast<const int16_t*>(shifted.data() + odd), width, height);
      ASSERT_TRUE(result.status.ok()) << result.status.message();
      const Bytes expected = model.Build(cloud.data(), width, height, harness.intrinsics);
      ASSERT_EQ(zelto_test::Hex(result.flat), zelto_test::Hex(expected));
    }
  }
  EXPECT_GT(model.otherDiagonals, 100);  // the re-fit was exercised
}

TEST(MeshBuilder, GivesTheModelsAndThePinnedBytesOnRealFrames) {
  MeshHarness harness;
  ReferenceMeshModel model;
  const RedwoodIntrinsics redwood;
  const ZeltoMesh::PinholeIntrinsics k{redwood.fx, redwood.fy, redwood.cx, redwood.cy};
  harness.intrinsics = k;
  harness.builder.resetTrianglePeriod = model.period = 2;  // every other frame
  std::vector<PointCloudImage> frames;
  for (int index = 0; index < 5; ++index) frames.push_back(LoadRedwoodFrame(index));
  for (int32_t level : {0, 1, 2, 3, 5}) {
    harness.builder.meshReductionLevel = model.level = level;
    for (int index = 0; index < 5; ++index) {
      for (const bool reset : {false, true}) {
        SCOPED_TRACE(testing::Message() << "frame " << index << ", level " << level
                                        << (reset ? ", reset" : ", not reset"));
        const PointCloudImage& image = frames[index];
        harness.flatRawData = (index + level + reset) % 2 == 0;
        const Bytes flat = harness.Fill(image.points.data(), image.width, image.height).flat;
        ASSERT_TRUE(flat == model.Build(image.points.data(), image.width, image.height, k));
        if (const int pinned = level == 0 ? 0 : level == 2 ? 1 : level == 5 ? 2 : -1; pinned >= 0) {
          EXPECT_EQ(Crc32(flat.data(), flat.size()), kRedwoodMeshCrc32[index][pinned][reset]);
        }
        if (index == 0 && level == 0) {
          EXPECT_EQ(flat.size(), kRedwoodFrame0FlatSize);
          EXPECT_EQ(Fnv1a64(flat.data(), flat.size()),
                    reset ? kRedwoodFrame0FlatResetFnv1a64 : kRedwoodFrame0FlatNonResetFnv1a64);
        }
      }
    }
  }
}

}  // namespace
}  // namespace ZeltoTest
