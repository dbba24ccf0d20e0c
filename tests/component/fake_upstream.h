// Fake upstream streams for the mesh source, served in-process through the
// host substitute: "zelto_stream" (log level, runtime settings),
// "zelto_tof_camera2_stream" and "player_tof_stream" (point-cloud frames,
// current configuration, process targets). Every stream can be absent, fail
// to open, fail or answer each property, and serve frames with or without a
// point-cloud channel, or none at all.
//
// Extending: add records with Serve (e.g. the calibration on Camera()), or
// whole streams with Add, before Register; route them with AddTo.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "properties/zelto_tof_properties.h"
#include "tests/component/fake_property.h"
#include "weftcore/host/configuration.h"
#include "weftcore/host/host_core.h"
#include "weftcore/status.h"

namespace zelto_test {

// The image every default camera configuration and test frame describes.
constexpr int32_t kFakeImageWidth = 4;
constexpr int32_t kFakeImageHeight = 3;
constexpr uint32_t kPointCloudChannelId = 2;

// One channel of a fake frame: its bytes are copied into frame memory of the
// host's allocator; `withoutMemory` delivers the channel with no memory
// object (its raw data address is then null).
struct FakeChannel {
  uint32_t id = 0;
  std::vector<uint8_t> bytes;
  std::string type;
  bool withoutMemory = false;
};

struct FakeFrame {
  uint64_t timestamp = 0;  // the capture time of every channel
  std::vector<FakeChannel> channels;
};

// A frame whose channel 2 holds `points` (x, y, z per pixel, row-major).
FakeFrame PointCloudFrame(const std::vector<int16_t>& points, uint64_t timestamp);
// A kFakeImageWidth x kFakeImageHeight point cloud: pixel (u, v) is
// (u, v, depthMm(u, v)) with every depth `depthMm`.
FakeFrame FlatPointCloudFrame(int16_t depthMm, uint64_t timestamp);
// A frame with only a channel 0: no point cloud.
FakeFrame FrameWithoutPointCloud(uint64_t timestamp);
// A frame whose channel 2 has no memory: its point cloud address is null.
FakeFrame FrameWithNullPointCloud(uint64_t timestamp);

// The camera configuration of the default records: kFakeImageWidth x
// kFakeImageHeight pixels, fx 2, fy 2, cx 1.5, cy 1.
ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ DefaultCameraConfiguration();

struct FakeStreamCounts {
  int opens = 0;        // successful Open calls
  int failedOpens = 0;  // Open calls refused (failOpen)
  int closes = 0;       // Close calls of sources that opened
  int starts = 0;
  int stops = 0;
  int frameRequests = 0;    // GetFrames calls
  int framesDelivered = 0;  // frames handed to the host
  int framesReleased = 0;   // ReleaseFrame calls
};

// The state of one fake stream, shared by the test and the stream's sources.
class FakeStream {
 public:
  explicit FakeStream(std::string key) : key_(std::move(key)) {}
  FakeStream(const FakeStream&) = delete;
  FakeStream& operator=(const FakeStream&) = delete;

  const std::string& key() const { return key_; }

  // Serves `key` with `initial` (replacing an earlier record of that key).
  // Properties are registered when the stream opens.
  template <typename T>
  FakeProperty<T>& Serve(const std::string& key, T initial = T()) {
    auto property = std::make_shared<FakeProperty<T>>(key, initial);
    properties_[key] = property;
    return *property;
  }
  // The record served under `key`; the type must be the one served.
  template <typename T>
  FakeProperty<T>& Property(const std::string& key) {
    return dynamic_cast<FakeProperty<T>&>(*properties_.at(key));
  }
  bool Serves(const std::string& key) const { return properties_.count(key) != 0; }
  void StopServing(const std::string& key) { properties_.erase(key); }
  const std::map<std::string, std::shared_ptr<FakePropertyBase>>& properties() const {
    return properties_;
  }

  // Frames: each GetFrames of the stream takes the next scripted answer; once
  // the script is used up it serves `SetSteadyFrame`'s frame, if any.
  void QueueFrame(FakeFrame frame) { script_.push_back(ScriptEntry{true, std::move(frame)}); }
  void QueueNoFrame() { script_.push_back(ScriptEntry{false, FakeFrame()}); }
  void SetSteadyFrame(FakeFrame frame) { steady_ = ScriptEntry{true, std::move(frame)}; }
  void ClearFrames();
  // The next answer: false for "no frame ready".
  bool NextFrame(FakeFrame* frame);

  // Open fails with OpenFailure() while set.
  bool failOpen = false;
  // GetFrames throws std::runtime_error("fake stream <key> throws") while set.
  bool throwOnGetFrames = false;
  weftcore::Status OpenFailure() const;

  FakeStreamCounts counts;

 private:
  std::string key_;
  std::map<std::string, std::shared_ptr<FakePropertyBase>> properties_;
  struct ScriptEntry {
    bool hasFrame = false;
    FakeFrame frame;
  };
  std::deque<ScriptEntry> script_;
  ScriptEntry steady_;
};

// The fake upstream world. One instance at a time is current: the host
// creates components through argument-less entry points, which find it.
class FakeUpstream {
 public:
  static constexpr char kComponentName[] = "fake_upstream";

  // A working world: the three streams with their default records (below),
  // no frames queued.
  FakeUpstream();
  ~FakeUpstream();
  FakeUpstream(const FakeUpstream&) = delete;
  FakeUpstream& operator=(const FakeUpstream&) = delete;

  // "zelto_stream": kZeltoLogLevelKey = Debug (3), kZeltoRuntimeSettingsKey =
  // {runMode 0, isRemoteServer false, isUsingArFoundation false}.
  FakeStream& ZeltoStream();
  // "zelto_tof_camera2_stream": kZeltoTofCamera2CurrentConfigurationKey =
  // DefaultCameraConfiguration(), kZeltoTofProcessTargetsKey = {true, false, false}.
  FakeStream& Camera();
  // "player_tof_stream": kZeltoTofCamera2CurrentConfigurationKey =
  // DefaultCameraConfiguration().
  FakeStream& Player();

  // A further stream served by this component (call before Register).
  FakeStream& Add(const std::string& key);
  FakeStream& StreamOf(const std::string& key);
  // The stream becomes absent: opening it fails with AbsentFailure(key).
  void Remove(const std::string& key);
  static weftcore::Status AbsentFailure(const std::string& key);

  // Registers the component with `core`; AddTo routes every stream key of
  // this world (present or removed) to it, with the key as source type.
  static weftcore::Status Register(weftcore::host::HostCore* core);
  void AddTo(weftcore::host::HostConfiguration* configuration) const;

  // Called by the fake component.
  static FakeUpstream* Current();
  std::shared_ptr<FakeStream> Find(const std::string& key) const;
  const std::set<std::string>& Keys() const { return keys_; }

 private:
  std::map<std::string, std::shared_ptr<FakeStream>> streams_;
  std::set<std::string> keys_;  // every key ever added
};

}  // namespace zelto_test
