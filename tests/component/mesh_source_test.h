// GoogleTest fixtures of the component suites.
//
// MeshSourceTest: the "mesh" stream opened through the host over a
// FakeUpstream, with the pacing clock fixed (ManualClock), OSSleep recorded
// instead of slept, and the platform log recorded. Configure `upstream`
// before OpenMesh.
//
// DirectOpenTest: a ZeltoMeshStreamSource of the test's own, opened by the
// test through a RecordingCore (over the same host) and a FakeUtility with a
// CountingAllocator.
#pragma once

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "component/stream_source_logger.h"
#include "component/zelto_mesh_streamsource.h"
#include "mesh/mesh_frame_data.h"
#include "tests/component/fake_upstream.h"
#include "tests/component/log_recorder.h"
#include "tests/component/mesh_host.h"
#include "tests/component/mesh_record.h"
#include "tests/component/open_doubles.h"
#include "tests/component/pacing_seams.h"
#include "tests/component/source_test_peer.h"
#include "weftcore/frame_info.h"

namespace zelto_test {

// Keeps the stream source module's logger level of a test from leaking into
// the next one.
class LoggerLevelGuard {
 public:
  LoggerLevelGuard() : saved_(StreamSourceLogger().GetLogLevel()) {}
  ~LoggerLevelGuard() { StreamSourceLogger().SetLogLevel(saved_); }
  LoggerLevelGuard(const LoggerLevelGuard&) = delete;
  LoggerLevelGuard& operator=(const LoggerLevelGuard&) = delete;

 private:
  ZeltoLogger::LogLevel saved_;
};

class MeshSourceTest : public ::testing::Test {
 protected:
  static constexpr ManualClock::TimePoint kStartTime{std::chrono::seconds(1000)};

  MeshSourceTest() { ManualClock::Set(kStartTime); }
  ~MeshSourceTest() override {
    ReleaseDelivered();
    host.reset();  // closes every stream while the fakes are alive
  }

  // Builds the host and opens "mesh"; use with ASSERT_NO_FATAL_FAILURE.
  void OpenMesh() {
    host = std::make_unique<MeshHost>(upstream);
    ASSERT_TRUE(host->registration().ok()) << host->registration().message();
    const weftcore::Status status = host->OpenMesh(&mesh);
    ASSERT_TRUE(status.ok()) << status.message();
    meshSource = host->SourceOf(mesh);
    ASSERT_NE(nullptr, meshSource);
    meshSource->SetClockForTesting(&ManualClock::Now);
  }

  // Closes "mesh" through the core, after releasing what the fixture holds.
  weftcore::Status CloseMesh() {
    ReleaseDelivered();
    const weftcore::Status status = host->core().CloseStream(mesh);
    mesh = nullptr;
    meshSource = nullptr;
    return status;
  }

  ZeltoMeshStreamSource& source() { return *meshSource; }
  ZeltoMeshStreamSourceTestPeer peer() const { return ZeltoMeshStreamSourceTestPeer(meshSource); }
  weftcore::host::HeapAllocator& allocator() { return host->core().allocator(); }

  // One GetFrames call on the source itself; what it delivers is released
  // by the fixture unless the test releases it first.
  std::vector<weftcore::FrameInfo> GetFrames() {
    std::vector<weftcore::FrameInfo> frames;
    source().GetFrames(&frames);
    delivered.insert(delivered.end(), frames.begin(), frames.end());
    return frames;
  }
  void ReleaseDelivered() {
    if (meshSource == nullptr) return;
    for (const weftcore::FrameInfo& frame : delivered) meshSource->ReleaseFrame(frame, nullptr);
    delivered.clear();
  }

  LoggerLevelGuard loggerLevel;
  FakeUpstream upstream;
  SleepRecorder sleeps;
  LogRecorder logs;
  std::unique_ptr<MeshHost> host;
  weftcore::Stream* mesh = nullptr;
  ZeltoMeshStreamSource* meshSource = nullptr;
  std::vector<weftcore::FrameInfo> delivered;
};

class DirectOpenTest : public ::testing::Test {
 protected:
  DirectOpenTest() : host(upstream), core(&host.core()), utility(&allocator) {}

  weftcore::Status Open() { return source.Open(&core, &utility); }
  ZeltoMeshStreamSourceTestPeer peer() { return ZeltoMeshStreamSourceTestPeer(&source); }
  // The calls recorded since `from`.
  std::vector<std::string> CallsSince(size_t from) const {
    return std::vector<std::string>(core.calls.begin() + static_cast<std::ptrdiff_t>(from),
                                    core.calls.end());
  }

  LoggerLevelGuard loggerLevel;
  FakeUpstream upstream;
  SleepRecorder sleeps;
  LogRecorder logs;
  MeshHost host;
  RecordingCore core;
  CountingAllocator allocator;
  FakeUtility utility;
  ZeltoMeshStreamSource source;
};

}  // namespace zelto_test
