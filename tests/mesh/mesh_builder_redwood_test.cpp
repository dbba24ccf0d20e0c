// Part 2.1 on a real depth frame: examples/redwood/depth/00000.png.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "flat_reader.h"
#include "mesh_harness.h"
#include "support/redwood_checksums.h"
#include "support/redwood_frame.h"

namespace ZeltoTest {
namespace {

const PointCloudImage& Frame0() {
  static const PointCloudImage image = LoadRedwoodFrame(0);
  return image;
}

FillResult FirstFlatFrame(int32_t period) {
  MeshHarness harness;
  harness.flatRawData = true;
  harness.builder.resetTrianglePeriod = period;
  const RedwoodIntrinsics k;
  return harness.Fill(Frame0().points, Frame0().width, Frame0().height, {k.fx, k.fy, k.cx, k.cy});
}

TEST(RedwoodFrame, ThePngIs640x480With16BitMillimetres) {
  const PointCloudImage& image = Frame0();
  ASSERT_EQ(image.width, 640);
  ASSERT_EQ(image.height, 480);
  ASSERT_EQ(image.points.size(), 3u * 640 * 480);
  // Known samples of the recording (16-bit big-endian in the PNG).
  int valid = 0;
  for (size_t i = 2; i < image.points.size(); i += 3) valid += image.points[i] >= 10 ? 1 : 0;
  EXPECT_GT(valid, 200000);
  EXPECT_LT(valid, 307200);
}

TEST(RedwoodFrame, ResetFrameHasTheCountsSizeAndPinnedChecksum) {
  const FillResult result = FirstFlatFrame(1);
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  const FlatView flat{result.bytes};
  EXPECT_EQ(flat.vertexCount(), 307200);
  EXPECT_EQ(flat.triangleCount(), 612162);
  ASSERT_EQ(result.bytes.size(), kRedwoodFrame0FlatSize);
  EXPECT_EQ(flat.resetTriangle(), 1);
  EXPECT_EQ(Fnv1a64(result.bytes.data(), result.bytes.size()), kRedwoodFrame0FlatResetFnv1a64);
}

TEST(RedwoodFrame, NonResetFrameHasTheCountsSizeAndPinnedChecksum) {
  const FillResult result = FirstFlatFrame(1000);
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  const FlatView flat{result.bytes};
  EXPECT_EQ(flat.vertexCount(), 307200);
  EXPECT_EQ(flat.triangleCount(), 612162);
  ASSERT_EQ(result.bytes.size(), kRedwoodFrame0FlatSize);
  EXPECT_EQ(flat.resetTriangle(), 0);
  EXPECT_EQ(Fnv1a64(result.bytes.data(), result.bytes.size()), kRedwoodFrame0FlatNonResetFnv1a64);
}

TEST(RedwoodFrame, Fnv1a64OfKnownStrings) {
  EXPECT_EQ(Fnv1a64("", 0), 0xcbf29ce484222325ull);
  EXPECT_EQ(Fnv1a64("a", 1), 0xaf63dc4c8601ec8cull);
  EXPECT_EQ(Fnv1a64("foobar", 6), 0x85944171f73967e8ull);
}

}  // namespace
}  // namespace ZeltoTest
