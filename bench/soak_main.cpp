// The soak: many frames of a real recording through the host, with the simulator as the
// device, while a client thread keeps changing the reduction level (0, 1, 3, 0, ...) and
// the layout (frame rate 30, flat; 60, reference). The client holds each frame until the
// next one has arrived and reads the previous one's mesh then, as a viewer drawing one frame
// while fetching the next would. A size change replaces the builder's arrays; the process's
// resident memory must not grow with the number of changes.
//
// Usage: zelto_soak [FRAMES [RECORDING]]   (10000 frames of examples/redwood by default)
// Prints the resident set after the first 1,000 frames and at the end, its peak, and the
// size of two frames' arrays (the double buffer at the largest mesh seen). Exits 1 when the
// resident set grew by more than one frame's arrays between the two readings.
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>

#include "mesh/mesh_algorithm_config_property.h"
#include "mesh/mesh_frame_data.h"
#include "weftcore/host/host_core.h"
#include "zelto_sim/host_configuration.h"

namespace {

constexpr uint64_t kEarlyFrames = 1000;
constexpr uint64_t kFramesPerChange = 3;
constexpr int32_t kLevels[] = {0, 1, 3};

// A "kB" line of /proc/self/status ("VmRSS", "VmHWM"), in MiB.
double StatusMegabytes(const char* field) {
  std::ifstream status("/proc/self/status");
  const std::string prefix = std::string(field) + ":";
  for (std::string line; std::getline(status, line);) {
    if (line.compare(0, prefix.size(), prefix) == 0) {
      return std::strtod(line.c_str() + prefix.size(), nullptr) / 1024.0;
    }
  }
  return 0;
}

// The mesh of a delivered frame, read as a client reads it: the vertex and triangle
// counts, and a sum over every vertex and index (which also proves the arrays a
// reference-layout frame names are still there). Returns the bytes of its two arrays.
uint64_t ReadMesh(weftcore::Frame* frame, double* sum) {
  weftcore::Channel* channel = nullptr;
  weftcore::Channel::RawData raw;
  if (frame->GetChannel(0, &channel).IsError() || channel->GetRawData(&raw).IsError()) return 0;
  int32_t vertexCount = 0;
  int32_t triangleCount = 0;
  if (raw.size == sizeof(ZeltoMesh::MeshFrameData)) {
    ZeltoMesh::MeshFrameData record;
    std::memcpy(&record, raw.address, sizeof record);
    vertexCount = record.vertexCount;
    triangleCount = record.triangleCount;
    for (int64_t i = 0; i < 3 * int64_t{vertexCount}; ++i) *sum += record.vertices[i];
    for (int64_t i = 0; i < 3 * int64_t{triangleCount}; ++i) *sum += record.triangles[i];
  } else {
    std::memcpy(&vertexCount, raw.address, sizeof vertexCount);
    std::memcpy(&triangleCount, static_cast<const char*>(raw.address) + 4 + 12 * vertexCount,
                sizeof triangleCount);
  }
  return 12 * static_cast<uint64_t>(vertexCount) + 12 * static_cast<uint64_t>(triangleCount);
}

int Fail(const char* what, const weftcore::Status& status) {
  std::fprintf(stderr, "zelto_soak: %s: %s\n", what, status.message().c_str());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  const uint64_t total = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 10000;
  ZeltoSim::HostOptions device;
  device.sim.input = argc > 2 ? argv[2] : ZELTO_EXAMPLES_DIR "/redwood";
  weftcore::host::HostCore host(ZeltoSim::BuildHostConfiguration(device));
  weftcore::Stream* mesh = nullptr;
  weftcore::Status status = host.OpenStream(ZeltoSim::kMeshStreamKey, &mesh);
  if (status.IsError()) return Fail("open", status);
  status = mesh->Start();
  if (status.IsError()) return Fail("start", status);

  // The client: one change of level every kFramesPerChange frames, of layout every other.
  std::mutex mutex;
  std::condition_variable progressed;
  uint64_t delivered = 0;
  bool done = false;
  std::atomic<uint64_t> refusedSets{0};
  std::thread client([&] {
    for (uint64_t change = 1;; ++change) {
      {
        std::unique_lock<std::mutex> lock(mutex);
        progressed.wait(lock, [&] { return done || delivered >= change * kFramesPerChange; });
        if (done) return;
      }
      const ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ config{kLevels[change % 3], 0};
      const weftcore::FrameRateProperty rate{(change / 2) % 2 == 0 ? 30u : 60u, 1u};
      refusedSets += mesh->SetProperty(ZeltoMesh::kZeltoMeshAlgorithmConfigKey, &config).IsError();
      refusedSets += mesh->SetProperty(weftcore::kFrameRatePropertyKey, &rate).IsError();
    }
  });

  weftcore::Frame* held = nullptr;
  uint64_t frames = 0;
  uint64_t rewinds = 0;
  uint64_t largestMesh = 0;
  double sum = 0;
  double earlyMegabytes = 0;
  while (frames < total && status.ok()) {
    weftcore::Frame* frame = nullptr;
    status = mesh->GetFrame(&frame, 0);
    if (status.ok() && frame == nullptr) {  // the recording has ended: play it again
      ++rewinds;
      status = mesh->Stop();
      if (status.ok()) status = mesh->Start();
      continue;
    }
    if (status.IsError()) break;
    if (held != nullptr) {
      largestMesh = std::max(largestMesh, ReadMesh(held, &sum));
      status = mesh->ReleaseFrame(held);
    }
    held = frame;
    {
      std::lock_guard<std::mutex> lock(mutex);
      delivered = ++frames;
    }
    progressed.notify_one();
    if (frames == kEarlyFrames) earlyMegabytes = StatusMegabytes("VmRSS");
  }
  {
    std::lock_guard<std::mutex> lock(mutex);
    done = true;
  }
  progressed.notify_one();
  client.join();
  if (status.IsError()) return Fail("frames", status);
  if (held != nullptr) mesh->ReleaseFrame(held);

  const double lastMegabytes = StatusMegabytes("VmRSS");
  const double twoFrames = 2.0 * static_cast<double>(largestMesh) / (1024.0 * 1024.0);
  std::printf("frames                    %llu of %s (played %llu times), checksum %.6g\n",
              static_cast<unsigned long long>(frames), device.sim.input.c_str(),
              static_cast<unsigned long long>(rewinds + 1), sum);
  std::printf("level and layout changes  every %llu frames (%llu Sets refused)\n",
              static_cast<unsigned long long>(kFramesPerChange),
              static_cast<unsigned long long>(refusedSets.load()));
  std::printf("two frames' arrays        %8.1f MiB\n", twoFrames);
  std::printf("RSS after %5llu frames    %8.1f MiB\n",
              static_cast<unsigned long long>(kEarlyFrames), earlyMegabytes);
  std::printf("RSS after %5llu frames    %8.1f MiB (%+.1f MiB)\n",
              static_cast<unsigned long long>(frames), lastMegabytes,
              lastMegabytes - earlyMegabytes);
  std::printf("peak RSS (VmHWM)          %8.1f MiB\n", StatusMegabytes("VmHWM"));
  status = host.CloseStream(mesh);
  std::printf("final RSS (VmRSS), closed %8.1f MiB\n", StatusMegabytes("VmRSS"));
  if (status.IsError()) return Fail("close", status);
  const bool flat = frames < kEarlyFrames || lastMegabytes - earlyMegabytes <= twoFrames / 2;
  if (!flat) std::fprintf(stderr, "zelto_soak: the resident set grew\n");
  return flat ? 0 : 1;
}
