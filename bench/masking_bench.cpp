// MaskedPointCloud::Apply on the real 640 x 480 redwood frame, with
// one colour mask, one depth mask, one of each, and three of each.
// Timing is manual and covers Apply only: the cloud is restored from a copy
// before every call, since Apply rewrites the depths it masks. The time is
// the thread's CPU time, so that other work on a shared machine does not
// inflate it.
// Counters: ns_per_point (Apply time / 307200), masked (share of points set
// to 32001).
#include <benchmark/benchmark.h>

#include <time.h>

#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "masking/masked_point_cloud.h"
#include "support/redwood_frame.h"

namespace {

// CPU time of the calling thread, in nanoseconds.
double ThreadNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

const ZeltoTest::PointCloudImage& RedwoodFrame() {
  static const ZeltoTest::PointCloudImage image = ZeltoTest::LoadRedwoodFrame(0);
  return image;
}

// A registered sensor: colour and depth share the redwood intrinsics and the
// identity rotation.
MaskedPointCloud RedwoodMasking() {
  const ZeltoTest::RedwoodIntrinsics k;
  MaskedPointCloud cloud;
  cloud.calibration.colorWidth = k.width;
  cloud.calibration.colorHeight = k.height;
  cloud.calibration.depthWidth = k.width;
  cloud.calibration.depthHeight = k.height;
  cloud.calibration.isCalibrated = true;
  cloud.calibration.c = {k.fx, k.fy, k.cx, k.cy};
  cloud.calibration.d = {k.fx, k.fy, k.cx, k.cy};
  cloud.calibration.R = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  const float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  std::memcpy(cloud.inverseRotation, identity, sizeof identity);
  return cloud;
}

// Segmentation-sized masks (colour 256 x 192, scale 0.4; depth 320 x 240,
// scale 0.5), mask m selecting the m-th vertical band of a twelfth of the
// width: the bands lie in the left half, and a point of the right half
// consults every mask.
struct MaskSet {
  std::vector<std::vector<uint8_t>> bytes;
  ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_ list;
};

MaskSet MakeMasks(int colorCount, int depthCount) {
  MaskSet set;
  const int total = colorCount + depthCount;
  set.bytes.reserve(static_cast<size_t>(total));
  for (int m = 0; m < total; ++m) {
    const bool isColor = m < colorCount;
    const uint32_t width = isColor ? 256 : 320;
    const uint32_t height = isColor ? 192 : 240;
    std::vector<uint8_t> bytes(static_cast<size_t>(width) * height, 0);
    const uint32_t band = width / 12;
    for (uint32_t row = 0; row < height; ++row) {
      std::memset(bytes.data() + row * width + band * static_cast<uint32_t>(m), 255, band);
    }
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
  const ZeltoTest::PointCloudImage& image = RedwoodFrame();
  const size_t byteCount = image.points.size() * sizeof(int16_t);
  const size_t pointCount = byteCount / 6;
  MaskSet masks = MakeMasks(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  MaskedPointCloud cloud = RedwoodMasking();
  std::vector<int16_t> points = image.points;
  weftcore::Channel::RawData raw;
  raw.address = points.data();
  raw.size = byteCount;

  double applyNs = 0;
  for (auto _ : state) {
    std::memcpy(points.data(), image.points.data(), byteCount);
    const double start = ThreadNanoseconds();
    const weftcore::Status status = cloud.Apply(&raw, &masks.list);
    benchmark::ClobberMemory();
    const double ns = ThreadNanoseconds() - start;
    if (!status.ok()) {
      state.SkipWithError("Apply failed");
      break;
    }
    applyNs += ns;
    state.SetIterationTime(ns * 1e-9);
  }
  size_t masked = 0;
  for (size_t i = 0; i < pointCount; ++i) masked += points[3 * i + 2] == 32001 ? 1 : 0;
  state.counters["ns_per_point"] =
      applyNs / (static_cast<double>(state.iterations()) * static_cast<double>(pointCount));
  state.counters["masked"] = static_cast<double>(masked) / static_cast<double>(pointCount);
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
