// A host over the built mesh and simulator plug-ins, a small recording whose every vertex
// and mask pixel is known, and a source of the test's own on a clock its sleeps advance.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "component/zelto_mesh_streamsource.h"
#include "mesh/mesh_frame_data.h"
#include "tests/support/log_capture.h"
#include "weftcore/host/host_core.h"
#include "weftcore/host/host_stream.h"
#include "zelto_sim/host_configuration.h"
#include "zelto_sim/png_io.h"

namespace zelto_test {

inline float Metres(int millimetres) { return static_cast<float>(millimetres) / 1000.0f; }
const float kMasked = Metres(32001);

// 4 x 3 pixels seen through fx = fy = 2, cx = 1.5, cy = 1; frame i puts every
// pixel at (i % 8 + 1) m. Masks, the same on every frame: "person" on the
// depth image, 255 at pixel 5 and 100 at pixel 6; "floor" on the colour image
// (the same camera), 255 at pixels 8 to 11.
inline std::string RecordingDirectory() {
  static const struct Recording {
    std::filesystem::path dir = std::filesystem::temp_directory_path() /
                                ("zelto_mesh_recording_" + std::to_string(getpid()));
    Recording() {
      for (const char* sub : {"pointcloud", "masks/person", "masks/floor"}) {
        std::filesystem::create_directories(dir / sub);
      }
      std::ofstream(dir / "intrinsics.json")
          << R"({"width":4,"height":3,"fx":2,"fy":2,"cx":1.5,"cy":1})";
      std::ofstream(dir / "masks/person/mask.json") << R"({"source":"depth"})";
      std::ofstream(dir / "masks/floor/mask.json") << R"({"source":"color"})";
      const uint8_t person[12] = {0, 0, 0, 0, 0, 255, 100, 0, 0, 0, 0, 0};
      const uint8_t floor[12] = {0, 0, 0, 0, 0, 0, 0, 0, 255, 255, 255, 255};
      for (int i = 0; i < 40; ++i) {
        const std::string name = std::to_string(100 + i);
        std::vector<int16_t> points;
        const int z = (i % 8 + 1) * 1000;
        for (int pixel = 0; pixel < 12; ++pixel) {
          points.insert(points.end(), {static_cast<int16_t>((pixel % 4 - 1.5) * z / 2),
                                       static_cast<int16_t>((pixel / 4 - 1) * z / 2),
                                       static_cast<int16_t>(z)});
        }
        std::ofstream(dir / "pointcloud" / (name + ".bin"), std::ios::binary)
            .write(reinterpret_cast<const char*>(points.data()), 72);
        ZeltoSim::WriteGrayPng((dir / "masks/person" / (name + ".png")).string(), 4, 3, 8, person);
        ZeltoSim::WriteGrayPng((dir / "masks/floor" / (name + ".png")).string(), 4, 3, 8, floor);
      }
    }
    ~Recording() { std::filesystem::remove_all(dir); }
  } recording;
  return recording.dir.string();
}

// The sim over that recording, plus one component argument (a failure knob) if given;
// logging at Debug, the level the mesh source adopts.
inline ZeltoSim::HostOptions Device(const std::string& knob = "", const std::string& value = "") {
  ZeltoSim::HostOptions options;
  options.sim.input = RecordingDirectory();
  options.sim.logLevel = 3;
  if (!knob.empty()) {
    weftcore::ComponentArgument argument;
    argument.values[knob] = value;
    EXPECT_TRUE(ZeltoSim::ParseSimOptions(argument, &options.sim).ok()) << knob << "=" << value;
  }
  options.meshLibrary = std::string(ZELTO_LIBRARY_DIR) + "/libcomponent_zelto_mesh.so";
  options.simLibrary = std::string(ZELTO_LIBRARY_DIR) + "/libcomponent_zelto_sim.so";
  return options;
}

// The vertex depths of a mesh channel in the reference layout: a 28-byte
// record, whose packed addresses are copied out, not referenced.
inline std::vector<float> DepthsOf(const void* address, uint64_t size) {
  EXPECT_EQ(sizeof(ZeltoMesh::MeshFrameData), size);
  ZeltoMesh::MeshFrameData record;
  std::memcpy(&record, address, sizeof record);
  std::vector<float> depths(static_cast<size_t>(record.vertexCount));
  for (size_t i = 0; i < depths.size(); ++i) depths[i] = record.vertices[3 * i + 2];
  return depths;
}
inline std::vector<float> DepthsOf(const weftcore::ChannelRawData& channel) {
  return DepthsOf(channel.memory->GetAddress(), channel.size);
}

// Frame memory of the test's own source: the host's allocator, refusing
// while `refuse` is set.
struct MeshMemory final : weftcore::MemoryAllocator {
  weftcore::Status Allocate(uint64_t size, weftcore::Memory** memory) override {
    if (!refuse) return heap.Allocate(size, memory);
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseOutOfMemory, "no memory");
  }
  weftcore::Status Free(weftcore::Memory* memory) override { return heap.Free(memory); }
  weftcore::host::HeapAllocator heap;
  bool refuse = false;
};

class MeshSourceTest : public ::testing::Test {
 protected:
  MeshSourceTest() {
    previousSleep = weftcore::osal::SetSleepHook([this](uint64_t nanoseconds) {
      std::lock_guard<std::mutex> lock(sleepMutex);
      sleeps.push_back(nanoseconds);
      now += std::chrono::nanoseconds(nanoseconds);
    });
  }
  ~MeshSourceTest() override {
    CloseSource();
    host.reset();
    weftcore::osal::SetSleepHook(previousSleep);
  }

  // A host over `device`; with `ownSource`, opens a source of the test's own
  // against it (frame memory from `meshMemory`) and returns Open's status.
  weftcore::Status OpenHost(const ZeltoSim::HostOptions& device = Device(), bool ownSource = true) {
    host = std::make_unique<weftcore::host::HostCore>(ZeltoSim::BuildHostConfiguration(device));
    if (!ownSource) return weftcore::Status();
    utility = std::make_unique<weftcore::host::HostStreamUtility>(&meshMemory);
    source = std::make_unique<ZeltoMeshStreamSource>([this] {
      std::lock_guard<std::mutex> lock(sleepMutex);
      return now;
    });
    return source->Open(host.get(), utility.get());
  }
  std::vector<weftcore::FrameInfo> GetFrames() {
    std::vector<weftcore::FrameInfo> frames;
    source->GetFrames(&frames);
    delivered.insert(delivered.end(), frames.begin(), frames.end());
    return frames;
  }
  void CloseSource() {
    if (!source) return;
    for (const weftcore::FrameInfo& frame : delivered) source->ReleaseFrame(frame, nullptr);
    delivered.clear();
    EXPECT_TRUE(source->Close().ok());
    source.reset();
  }
  // The messages logged so far, each a Debug line of the mesh component.
  std::vector<std::string> Messages() const {
    std::vector<std::string> lines;
    for (const LogRecord& record : logs.records()) {
      EXPECT_EQ(MeshDebug(record.message), record);
      lines.push_back(record.message);
    }
    return lines;
  }
  std::vector<uint64_t> TakeSleeps() {
    std::lock_guard<std::mutex> lock(sleepMutex);
    return std::exchange(sleeps, {});
  }

  LogCapture logs;
  std::mutex sleepMutex;
  std::chrono::steady_clock::time_point now{std::chrono::hours(1)};
  std::vector<uint64_t> sleeps;
  weftcore::osal::SleepHook previousSleep;
  std::unique_ptr<weftcore::host::HostCore> host;
  MeshMemory meshMemory;
  std::unique_ptr<weftcore::host::HostStreamUtility> utility;
  std::unique_ptr<ZeltoMeshStreamSource> source;
  std::vector<weftcore::FrameInfo> delivered;
};

}  // namespace zelto_test
