// The builder against ReferenceMeshModel, the unoptimised per-vertex
// computation, frame after frame: on random images while settings, sizes,
// layouts and block alignments change as clients and hosts change them, and on
// the five real redwood frames, whose checksums every suite shares. Whatever
// the builder does to be fast (vector lanes and tails, indices rewritten only
// where a cell changes, vertices stored into the frame memory in place) must
// give the model's bytes.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <utility>

#include "mesh_harness.h"
#include "support/redwood_checksums.h"
#include "support/redwood_frame.h"

namespace ZeltoTest {
namespace {

// The flat layout one vertex and one cell at a time, each float expression
// rounded as the builder must round it. For extents below 2^24 and levels from
// 0 to 2^30: it has none of the builder's overflow guards.
struct ReferenceMeshModel {
  int32_t level = 0;
  int32_t period = 4;
  int32_t frames = 0;
  int64_t otherDiagonals = 0;

  Bytes Build(const int16_t* cloud, int32_t width, int32_t height, const ZeltoMesh::PinholeIntrinsics& k) {
    const int32_t step = level + 1;
    const int32_t nx = static_cast<int32_t>(std::ceil(static_cast<float>(width) / static_cast<float>(step)));
    const int32_t ny = static_cast<int32_t>(std::ceil(static_cast<float>(height) / static_cast<float>(step)));
    std::vector<float> vertices;
    for (int32_t v = 0; v < height; v += step) {
      for (int32_t u = 0; u < width; u += step) {
        int32_t d = cloud[(int64_t{v} * width + u) * 3 + 2];
        const float z = static_cast<float>(d < 10 ? 32001 : d);
        vertices.insert(vertices.end(), {((static_cast<float>(u) - k.cx) * (z / k.fx)) / 1000.0f,
                                         ((static_cast<float>(v) - k.cy) * (z / k.fy)) / 1000.0f, z / 1000.0f});
      }
    }
    const bool reset = (period == 0 ? ++frames : ++frames % period) == 0;
    zelto_test::LeBytes cells;
    cells.I32(nx > 0 && ny > 0 ? 2 * (nx - 1) * (ny - 1) : 0);
    for (int32_t b = 0; b + nx + 1 < nx * ny; ++b) {
      if (b % nx == nx - 1) continue;  // the last column starts no cell
      const float dA = std::fabs(vertices[3 * b + 2] - vertices[3 * (b + nx + 1) + 2]);
      const float dB = std::fabs(vertices[3 * (b + 1) + 2] - vertices[3 * (b + nx) + 2]);
      const bool other = reset && !(dA > dB + 0.05f) && dA + 0.05f < dB;
      otherDiagonals += other;
      cells.I32s({b, b + 1, other ? b + nx + 1 : b + nx, other ? b : b + 1, b + nx + 1, b + nx});
    }
    const auto* floats = reinterpret_cast<const uint8_t*>(vertices.data());
    return zelto_test::Cat({zelto_test::LeBytes().I32(nx * ny).bytes(),
                            Bytes(floats, floats + 4 * vertices.size()), cells.U8(reset).bytes()});
  }
};

TEST(MeshBuilder, GivesTheModelsBytesOnRandomFramesWithChangingSettings) {
  std::mt19937 random(20240517);
  const auto uniform = [&random](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
  ReferenceMeshModel model;
  for (int sequence = 0; sequence < 60; ++sequence) {
    MeshHarness harness;
    model.frames = 0;
    harness.intrinsics = {float(uniform(0, 900)), float(uniform(1, 900)), uniform(0, 400) / 4.0f, uniform(0, 400) / 4.0f};
    int32_t width = 0;
    int32_t height = 0;
    for (int frame = 0; frame < 8; ++frame) {
      if (frame == 0 || uniform(0, 3) == 0) {
        harness.builder.meshReductionLevel = model.level = uniform(0, 4);
        harness.builder.resetTrianglePeriod = model.period = uniform(0, 3);
      }
      harness.flatRawData = uniform(0, 1) == 1;
      harness.allocator.misalignment = uint64_t{1} << uniform(0, 4) >> 1;  // 0, 1, 2, 4 or 8 bytes
      if (frame == 0 || uniform(0, 4) == 0) {  // sizes mostly stay, so records are reused
        width = uniform(0, 41);
        height = uniform(0, 9);
      } else if (uniform(0, 5) == 0) {
        std::swap(width, height);  // the same counts on a grid of other dimensions
      }
      std::vector<int16_t> depth(size_t(width) * size_t(height));
      for (int16_t& d : depth) {  // smooth with steps, some invalid, a few negative
        const int kind = uniform(0, 9);
        d = int16_t(kind == 0 ? uniform(-20, 12) : kind == 1 ? uniform(800, 4000) : 1000 + uniform(0, 60));
      }
      const std::vector<int16_t> points = PointCloud(depth);
      const int16_t none = 0;  // an empty image still comes with a point cloud
      const int16_t* cloud = points.empty() ? &none : points.data();
      SCOPED_TRACE(testing::Message() << "sequence " << sequence << " frame " << frame << ": " << width
                                      << " x " << height << " level " << model.level);
      const FillResult result = harness.Fill(cloud, width, height);
      ASSERT_TRUE(result.status.ok()) << result.status.message();
      ASSERT_EQ(zelto_test::Hex(result.flat), zelto_test::Hex(model.Build(cloud, width, height, harness.intrinsics)));
    }
  }
  EXPECT_GT(model.otherDiagonals, 100);  // the re-fit was exercised
}

TEST(MeshBuilder, GivesTheModelsAndThePinnedBytesOnRealFrames) {
  std::vector<PointCloudImage> frames;
  for (int index = 0; index < 5; ++index) frames.push_back(LoadRedwoodFrame(index));
  const RedwoodIntrinsics redwood;
  MeshHarness harness;
  harness.intrinsics = {redwood.fx, redwood.fy, redwood.cx, redwood.cy};
  ReferenceMeshModel model;
  harness.builder.resetTrianglePeriod = model.period = 2;
  size_t pinsChecked = 0;
  for (int32_t level : {0, 1, 2, 3, 5}) {
    harness.builder.meshReductionLevel = model.level = level;
    for (int index = 0; index < 5; ++index) {
      for (const bool reset : {false, true}) {  // period 2: every other frame
        SCOPED_TRACE(testing::Message() << "frame " << index << " level " << level << " reset " << reset);
        const PointCloudImage& image = frames[index];
        harness.flatRawData = (index + level + reset) % 2 == 0;
        const FillResult result = harness.Fill(image.points.data(), image.width, image.height);
        ASSERT_TRUE(result.flat == model.Build(image.points.data(), image.width, image.height, harness.intrinsics));
        for (const RedwoodMeshChecksum& pin : kRedwoodMeshChecksums) {
          if (pin.frame != index || pin.level != level || pin.reset != reset) continue;
          EXPECT_EQ(Crc32(result.flat.data(), result.flat.size()), pin.crc32);
          ++pinsChecked;
        }
        if (index == 0 && level == 0) {
          EXPECT_EQ(result.flat.size(), kRedwoodFrame0FlatSize);
          EXPECT_EQ(Fnv1a64(result.flat.data(), result.flat.size()),
                    reset ? kRedwoodFrame0FlatResetFnv1a64 : kRedwoodFrame0FlatNonResetFnv1a64);
        }
      }
    }
  }
  EXPECT_EQ(pinsChecked, std::size(kRedwoodMeshChecksums));
}

}  // namespace
}  // namespace ZeltoTest
