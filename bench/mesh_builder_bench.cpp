// MeshBuilder::Fill on real 640 x 480 frames, against a memcpy of as many
// bytes as the mesh data (12 V + 12 T) in the same binary: BM_FillMoving on
// the moving sequence (a different frame on every call, as a device sees
// them), BM_Fill on the first redwood frame over and over (its depths stay in
// the cache and no cell changes its split from one call to the next).
// Counters, in thread CPU time (which other processes on a shared machine
// disturb less than wall time): fill_cpu_us, the mean Fill; memcpy_cpu_us,
// the mean copy of 12 V + 12 T bytes measured every fourth iteration of the
// same case; x_memcpy, their ratio.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <time.h>
#include <vector>

#include "mesh/mesh_builder.h"
#include "moving_frames.h"
#include "support/redwood_frame.h"
#include "weftcore/host/heap_allocator.h"

namespace {

double ThreadCpuMicroseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

const std::vector<ZeltoTest::PointCloudImage>& MovingFrames() {
  static const std::vector<ZeltoTest::PointCloudImage> frames = ZeltoBench::LoadMovingFrames();
  return frames;
}

const ZeltoTest::PointCloudImage& RedwoodFrame() { return MovingFrames().front(); }

uint64_t MeshDataBytes(int32_t level) {
  const ZeltoTest::PointCloudImage& image = RedwoodFrame();
  const int64_t step = level + 1;
  const int64_t nx = (image.width + step - 1) / step;
  const int64_t ny = (image.height + step - 1) / step;
  return static_cast<uint64_t>(12 * nx * ny + 12 * 2 * (nx - 1) * (ny - 1));
}

// A copy of `bytes` between two buffers that are already touched, timed on
// the third of three back-to-back copies (hot caches, as BM_Memcpy sees them).
class MemcpyYardstick {
 public:
  explicit MemcpyYardstick(uint64_t bytes) : source_(bytes, 1), target_(bytes, 2) {}
  double Microseconds() {
    double start = 0;
    for (int copy = 0; copy < 3; ++copy) {
      start = ThreadCpuMicroseconds();
      std::memcpy(target_.data(), source_.data(), source_.size());
      benchmark::ClobberMemory();
    }
    return ThreadCpuMicroseconds() - start;
  }

 private:
  std::vector<unsigned char> source_;
  std::vector<unsigned char> target_;
};

void BM_Memcpy(benchmark::State& state) {
  const uint64_t bytes = MeshDataBytes(static_cast<int32_t>(state.range(0)));
  std::vector<unsigned char> source(bytes, 1);
  std::vector<unsigned char> target(bytes, 2);
  for (auto _ : state) {
    std::memcpy(target.data(), source.data(), bytes);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

// Fill on `frames` in turn. Arguments: reduction level, flat layout (0 or
// 1), reset frame (0 or 1).
void RunFill(benchmark::State& state,
             const std::vector<const ZeltoTest::PointCloudImage*>& frames) {
  const int32_t level = static_cast<int32_t>(state.range(0));
  const bool flat = state.range(1) != 0;
  const bool reset = state.range(2) != 0;
  weftcore::host::HeapAllocator allocator;  // the host's default allocator
  std::mutex flagsMutex;
  std::atomic<bool> frameRate30{false};
  ZeltoMesh::MeshBuilder builder;
  builder.meshReductionLevel = level;
  builder.resetTrianglePeriod = reset ? 1 : 0;  // 0: never a reset frame
  const ZeltoTest::RedwoodIntrinsics k;

  size_t next = 0;
  const auto fillOnce = [&] {
    const ZeltoTest::PointCloudImage& image = *frames[next];
    next = (next + 1) % frames.size();
    weftcore::FrameInfo frame;
    const weftcore::Status status =
        builder.Fill(&frame, &allocator, image.points.data(), image.width, image.height, k.fx,
                     k.fy, k.cx, k.cy, flagsMutex, flat, frameRate30);
    if (!status.ok() || frame.channels.size() != 1) {
      state.SkipWithError("Fill failed");
      return;
    }
    benchmark::DoNotOptimize(frame.channels[0].memory->GetAddress());
    builder.FrameReleased(frame.channels[0].memory);  // as the source's ReleaseFrame does
    allocator.Free(frame.channels[0].memory);
  };
  // Warm-up: both records allocated, frame memory recycled by the heap,
  // every frame of the sequence loaded.
  for (size_t i = 0; i < std::max<size_t>(4, frames.size()); ++i) fillOnce();

  // The yardstick copy runs every fourth iteration, outside the timed Fill,
  // so that both see the same load from other processes on the machine.
  MemcpyYardstick yardstick(MeshDataBytes(level));
  double fillUs = 0;
  double memcpyUs = 0;
  int64_t fills = 0;
  int64_t copies = 0;
  for (auto _ : state) {
    const double start = ThreadCpuMicroseconds();
    fillOnce();
    fillUs += ThreadCpuMicroseconds() - start;
    ++fills;
    if (fills % 4 == 1) {
      state.PauseTiming();
      memcpyUs += yardstick.Microseconds();
      ++copies;
      state.ResumeTiming();
    }
  }
  state.counters["fill_cpu_us"] = fillUs / static_cast<double>(fills);
  state.counters["memcpy_cpu_us"] = memcpyUs / static_cast<double>(copies);
  state.counters["x_memcpy"] =
      (fillUs / static_cast<double>(fills)) / (memcpyUs / static_cast<double>(copies));
  builder.ReleaseArrays();
}

void BM_FillMoving(benchmark::State& state) {
  std::vector<const ZeltoTest::PointCloudImage*> frames;
  for (const ZeltoTest::PointCloudImage& image : MovingFrames()) frames.push_back(&image);
  RunFill(state, frames);
}

void BM_Fill(benchmark::State& state) { RunFill(state, {&RedwoodFrame()}); }

BENCHMARK(BM_Memcpy)->ArgName("level")->Arg(0)->Arg(1)->Arg(3)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FillMoving)
    ->ArgNames({"level", "flat", "reset"})
    ->ArgsProduct({{0, 1, 3}, {0, 1}, {0, 1}})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Fill)
    ->ArgNames({"level", "flat", "reset"})
    ->ArgsProduct({{0, 1, 3}, {0, 1}, {0, 1}})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
