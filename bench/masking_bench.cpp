// MaskedPointCloud::Apply as a device runs it: the five real 640 x 480
// redwood frames in turn (a moving camera), colour and depth cameras turned
// 2 degrees against each other, and segmentation masks whose content moves
// from frame to frame, with one colour mask, one depth mask, one of each, and
// three of each.
// Timing is manual and covers Apply only: the frame is copied into the
// working cloud, untimed, before every call, since Apply rewrites the depths
// it masks. The time is the thread's CPU time, so that other work on a
// shared machine does not inflate it.
// Counters: ns_per_point (Apply time / 307200), masked (share of points set
// to 32001, over the five frames).
#include <benchmark/benchmark.h>

#include <time.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "masking/masked_point_cloud.h"
#include "support/redwood_frame.h"

namespace {

constexpr int kFrameCount = 5;

// CPU time of the calling thread, in nanoseconds.
double ThreadNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

const std::vector<ZeltoTest::PointCloudImage>& RedwoodFrames() {
  static const std::vector<ZeltoTest::PointCloudImage> frames = [] {
    std::vector<ZeltoTest::PointCloudImage> loaded;
    for (int i = 0; i < kFrameCount; ++i) loaded.push_back(ZeltoTest::LoadRedwoodFrame(i));
    return loaded;
  }();
  return frames;
}

// Colour and depth share the redwood intrinsics; the colour camera is turned
// 2 degrees about the axis (1, 2, 2) / 3, so that every term of the rotation
// is non-zero, as on a factory-calibrated device.
MaskedPointCloud RotatedRedwoodMasking() {
  const ZeltoTest::RedwoodIntrinsics k;
  MaskedPointCloud cloud;
  cloud.calibration.colorWidth = k.width;
  cloud.calibration.colorHeight = k.height;
  cloud.calibration.depthWidth = k.width;
  cloud.calibration.depthHeight = k.height;
  cloud.calibration.isCalibrated = true;
  cloud.calibration.c = {k.fx, k.fy, k.cx, k.cy};
  cloud.calibration.d = {k.fx, k.fy, k.cx, k.cy};
  const double angle = 2.0 * 3.14159265358979323846 / 180.0;
  const double x = 1.0 / 3, y = 2.0 / 3, z = 2.0 / 3, c = std::cos(angle), s = std::sin(angle);
  const double r[9] = {c + x * x * (1 - c),     x * y * (1 - c) - z * s, x * z * (1 - c) + y * s,
                       y * x * (1 - c) + z * s, c + y * y * (1 - c),     y * z * (1 - c) - x * s,
                       z * x * (1 - c) - y * s, z * y * (1 - c) + x * s, c + z * z * (1 - c)};
  cloud.calibration.R = {
      static_cast<float>(r[0]), static_cast<float>(r[1]), static_cast<float>(r[2]),
      static_cast<float>(r[3]), static_cast<float>(r[4]), static_cast<float>(r[5]),
      static_cast<float>(r[6]), static_cast<float>(r[7]), static_cast<float>(r[8])};
  // The inverse of a rotation is its transpose.
  for (int row = 0; row < 3; ++row) {
    for (int col = 0; col < 3; ++col) {
      cloud.inverseRotation[3 * row + col] = static_cast<float>(r[3 * col + row]);
    }
  }
  return cloud;
}

// Segmentation-sized masks (colour 256 x 192, depth 320 x 240) for one frame:
// mask m selects an upright ellipse, a person-sized blob, whose centre
// depends on m and drifts with the frame, with a soft edge of bytes around
// the threshold, as a segmentation network's output has.
struct MaskSet {
  std::vector<std::vector<uint8_t>> bytes;
  ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_ list;
};

std::vector<uint8_t> EllipseMask(uint32_t width, uint32_t height, int mask, int frame) {
  const double cx = (0.15 + 0.12 * mask + 0.04 * frame) * width;
  const double cy = (0.35 + 0.1 * ((mask + frame) % 3)) * height;
  const double rx = 0.11 * width, ry = 0.3 * height;
  std::vector<uint8_t> bytes(static_cast<size_t>(width) * height);
  for (uint32_t row = 0; row < height; ++row) {
    for (uint32_t col = 0; col < width; ++col) {
      const double dx = (col - cx) / rx, dy = (row - cy) / ry;
      const double inside = 1.0 - (dx * dx + dy * dy);  // > 0 inside
      bytes[static_cast<size_t>(row) * width + col] =
          static_cast<uint8_t>(std::lround(std::fmin(std::fmax(55 + inside * 800, 0), 255)));
    }
  }
  return bytes;
}

MaskSet MakeMasks(int colorCount, int depthCount, int frame) {
  MaskSet set;
  const int total = colorCount + depthCount;
  set.bytes.reserve(static_cast<size_t>(total));
  for (int m = 0; m < total; ++m) {
    const bool isColor = m < colorCount;
    const uint32_t width = isColor ? 256 : 320;
    const uint32_t height = isColor ? 192 : 240;
    std::vector<uint8_t> bytes = EllipseMask(width, height, m, frame);
    ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_ record;
    record.name = isColor ? "color" : "depth";
    record.maskDataAddress = reinterpret_cast<uintptr_t>(bytes.data());
    record.maskDataSize = bytes.size();
    record.maskDataWidth = width;
    record.maskDataHeight = height;
    record.isColorSource = isColor;
    set.list.data.push_back(record);
    set.bytes.push_back(std::move(bytes));
  }
  return set;
}

// Arguments: number of colour masks, number of depth masks.
void BM_Apply(benchmark::State& state) {
  const std::vector<ZeltoTest::PointCloudImage>& frames = RedwoodFrames();
  const size_t byteCount = frames[0].points.size() * sizeof(int16_t);
  const size_t pointCount = byteCount / 6;
  std::vector<MaskSet> masks;
  for (int f = 0; f < kFrameCount; ++f) {
    masks.push_back(
        MakeMasks(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), f));
  }
  MaskedPointCloud cloud = RotatedRedwoodMasking();
  std::vector<int16_t> points(frames[0].points.size());
  weftcore::Channel::RawData raw;
  raw.address = points.data();
  raw.size = byteCount;

  double applyNs = 0;
  size_t masked = 0;
  int frame = 0;
  for (auto _ : state) {
    std::memcpy(points.data(), frames[static_cast<size_t>(frame)].points.data(), byteCount);
    const double start = ThreadNanoseconds();
    const weftcore::Status status = cloud.Apply(&raw, &masks[static_cast<size_t>(frame)].list);
    benchmark::ClobberMemory();
    const double ns = ThreadNanoseconds() - start;
    if (!status.ok()) {
      state.SkipWithError("Apply failed");
      break;
    }
    applyNs += ns;
    state.SetIterationTime(ns * 1e-9);
    for (size_t i = 0; i < pointCount; ++i) masked += points[3 * i + 2] == 32001 ? 1 : 0;
    frame = (frame + 1) % kFrameCount;
  }
  const double pointsTimed =
      static_cast<double>(state.iterations()) * static_cast<double>(pointCount);
  state.counters["ns_per_point"] = applyNs / pointsTimed;
  state.counters["masked"] = static_cast<double>(masked) / pointsTimed;
}

BENCHMARK(BM_Apply)
    ->ArgNames({"color", "depth"})
    ->Args({1, 0})
    ->Args({0, 1})
    ->Args({1, 1})
    ->Args({3, 3})
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace
