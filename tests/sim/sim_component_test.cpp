// libcomponent_zelto_sim.so loaded by the weftcore host: the four streams,
// their properties and frames, as the mesh source sees them.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <memory>

#include "properties/zelto_log_level_property.h"
#include "properties/zelto_runtime_settings_property.h"
#include "properties/zelto_segmentation_properties.h"
#include "properties/zelto_tof_properties.h"
#include "sim/sim_test_files.h"
#include "weftcore/host/host_core.h"
#include "zelto_sim/host_configuration.h"
#include "zelto_sim/recording.h"
#include "zelto_sim/synthetic_scene.h"

namespace {

using weftcore::Status;
using weftcore::Stream;
using weftcore::host::HostCore;

const std::string kRedwood = std::string(ZELTO_EXAMPLES_DIR) + "/redwood";

// A host with the sim configured by `options`; streams opened through it are
// closed by the host's destructor.
class SimHost {
 public:
  explicit SimHost(const ZeltoSim::HostOptions& options)
      : core_(ZeltoSim::BuildHostConfiguration(options), {ZELTO_LIBRARY_DIR}) {}

  Stream* Open(const std::string& key) {
    Stream* stream = nullptr;
    const Status status = core_.OpenStream(key, &stream);
    EXPECT_TRUE(status.ok()) << key << ": " << status.message();
    return stream;
  }
  Status TryOpen(const std::string& key) {
    Stream* stream = nullptr;
    return core_.OpenStream(key, &stream);
  }
  HostCore& core() { return core_; }

 private:
  HostCore core_;
};

ZeltoSim::HostOptions Options(uint64_t frames) {
  ZeltoSim::HostOptions options;
  options.sim.frames = frames;
  options.sim.seed = 5;
  return options;
}

// One frame read without waiting: its channels by id (address, size, type,
// timestamp), released before returning. Empty when no frame came.
struct ChannelCopy {
  std::vector<uint8_t> bytes;
  std::string type;
  uint64_t timestamp = 0;
};
using FrameCopy = std::map<uint32_t, ChannelCopy>;

bool ReadFrame(Stream* stream, FrameCopy* copy, uint64_t* sequence = nullptr) {
  copy->clear();
  weftcore::Frame* frame = nullptr;
  EXPECT_TRUE(stream->GetFrame(&frame, 0).ok());
  if (frame == nullptr) return false;
  if (sequence != nullptr) *sequence = frame->GetSequenceNumber();
  std::map<uint32_t, weftcore::Channel*> channels;
  EXPECT_TRUE(frame->GetChannelList(&channels).ok());
  for (const auto& [id, channel] : channels) {
    weftcore::Channel::RawData raw;
    EXPECT_TRUE(channel->GetRawData(&raw).ok());
    const auto* bytes = static_cast<const uint8_t*>(raw.address);
    (*copy)[id] =
        ChannelCopy{std::vector<uint8_t>(bytes, bytes + raw.size), raw.type, raw.timestamp};
  }
  EXPECT_TRUE(stream->ReleaseFrame(frame).ok());
  return true;
}

void SwitchPointCloud(Stream* camera, bool on) {
  ZeltoTof::ZeltoTofProcessTargetsProperty_ targets;
  ASSERT_TRUE(camera->GetProperty(ZeltoTof::kZeltoTofProcessTargetsKey, &targets).ok());
  targets.processPointCloud = on;
  ASSERT_TRUE(camera->SetProperty(ZeltoTof::kZeltoTofProcessTargetsKey, &targets).ok());
}

std::vector<uint8_t> SceneCloudBytes(uint64_t seed, uint64_t index) {
  std::vector<uint16_t> depth;
  ZeltoSim::SyntheticScene(seed).RenderDepth(index, &depth);
  std::vector<int16_t> points(depth.size() * 3);
  ZeltoSim::DepthImageToPointCloud(depth.data(), ZeltoSim::SceneIntrinsics(), points.data());
  const auto* bytes = reinterpret_cast<const uint8_t*>(points.data());
  return std::vector<uint8_t>(bytes, bytes + points.size() * sizeof(int16_t));
}

TEST(SimComponent, SettingsStream) {
  ZeltoSim::HostOptions options = Options(0);
  options.sim.remote = true;
  options.sim.runMode = 200;
  SimHost host(options);
  Stream* settings = host.Open(Zelto::kStreamKey);
  ASSERT_NE(settings, nullptr);

  Zelto::ZeltoLogLevelProperty_ level;
  ASSERT_TRUE(settings->GetProperty(Zelto::kZeltoLogLevelKey, &level).ok());
  EXPECT_EQ(level.logLevel, 8);
  level.logLevel = ZeltoLogger::Debug;
  ASSERT_TRUE(settings->SetProperty(Zelto::kZeltoLogLevelKey, &level).ok());
  level.logLevel = ZeltoLogger::Silent;
  ASSERT_TRUE(settings->GetProperty(Zelto::kZeltoLogLevelKey, &level).ok());
  EXPECT_EQ(level.logLevel, ZeltoLogger::Debug);
  level.logLevel = static_cast<ZeltoLogger::LogLevel>(9);
  const Status rejected = settings->SetProperty(Zelto::kZeltoLogLevelKey, &level);
  EXPECT_EQ(rejected.cause(), weftcore::kCauseInvalidArgument);
  EXPECT_EQ(rejected.message(), "log level 9 is out of range 2..8");

  Zelto::ZeltoRuntimeSettingsProperty_ runtime;
  ASSERT_TRUE(settings->GetProperty(Zelto::kZeltoRuntimeSettingsKey, &runtime).ok());
  EXPECT_EQ(static_cast<int>(runtime.runMode), 200);
  EXPECT_TRUE(runtime.isRemoteServer);
  EXPECT_FALSE(runtime.isUsingArFoundation);
  runtime.isRemoteServer = false;
  ASSERT_TRUE(settings->SetProperty(Zelto::kZeltoRuntimeSettingsKey, &runtime).ok());
  runtime.isRemoteServer = true;
  ASSERT_TRUE(settings->GetProperty(Zelto::kZeltoRuntimeSettingsKey, &runtime).ok());
  EXPECT_FALSE(runtime.isRemoteServer);

  Status nullSet =
      settings->SetProperty<Zelto::ZeltoLogLevelProperty_>(Zelto::kZeltoLogLevelKey, nullptr);
  EXPECT_EQ(nullSet.message(), "Null pointer");
}

TEST(SimComponent, CameraConfigurationAndCalibration) {
  SimHost host(Options(0));
  Stream* camera = host.Open(ZeltoTof::kCamera2StreamKey);
  ASSERT_NE(camera, nullptr);
  ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ configuration;
  ASSERT_TRUE(
      camera->GetProperty(ZeltoTof::kZeltoTofCamera2CurrentConfigurationKey, &configuration).ok());
  EXPECT_EQ(configuration.width, 640);
  EXPECT_EQ(configuration.height, 480);
  EXPECT_EQ(configuration.intrinsics.fx, 525.0f);
  EXPECT_EQ(configuration.intrinsics.fy, 525.0f);
  EXPECT_EQ(configuration.intrinsics.cx, 319.5f);
  EXPECT_EQ(configuration.intrinsics.cy, 239.5f);
  EXPECT_EQ(configuration.frameRate, 30.0f);
  EXPECT_EQ(configuration.name, "synthetic");
  const Status readOnly =
      camera->SetProperty(ZeltoTof::kZeltoTofCamera2CurrentConfigurationKey, &configuration);
  EXPECT_EQ(readOnly.cause(), weftcore::kCauseNotAvailable);
  EXPECT_EQ(readOnly.message(), "not available to set kZeltoTofCamera2CurrentConfigurationKey");

  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ calibration;
  ASSERT_TRUE(camera->GetProperty(ZeltoTof::kZeltoTofCalibrationSettingsKey, &calibration).ok());
  const auto expected = ZeltoSim::SceneCalibration();
  EXPECT_TRUE(calibration.isCalibrated);
  EXPECT_EQ(calibration.colorWidth, expected.colorWidth);
  EXPECT_EQ(calibration.depthHeight, expected.depthHeight);
  EXPECT_EQ(calibration.c.fx, expected.c.fx);
  EXPECT_EQ(calibration.d.cx, expected.d.cx);
  EXPECT_EQ(calibration.R.a, expected.R.a);
  EXPECT_EQ(calibration.R.c, expected.R.c);
  EXPECT_EQ(calibration.R.h, expected.R.h);

  ZeltoTof::ZeltoTofProcessTargetsProperty_ targets;
  ASSERT_TRUE(camera->GetProperty(ZeltoTof::kZeltoTofProcessTargetsKey, &targets).ok());
  EXPECT_TRUE(targets.processDepth);
  EXPECT_FALSE(targets.processConfidence);
  EXPECT_FALSE(targets.processPointCloud);
}

TEST(SimComponent, PointCloudOnlyWhileTheProcessTargetsAskForIt) {
  SimHost host(Options(0));
  Stream* camera = host.Open(ZeltoTof::kCamera2StreamKey);
  ASSERT_NE(camera, nullptr);
  ASSERT_TRUE(camera->Start().ok());
  FrameCopy frame;
  uint64_t sequence = 99;
  ASSERT_TRUE(ReadFrame(camera, &frame, &sequence));
  EXPECT_EQ(sequence, 0u);
  ASSERT_EQ(frame.size(), 1u);
  EXPECT_EQ(frame[0].type, "kRawDataTypeDepth");
  EXPECT_EQ(frame[0].bytes.size(), 640u * 480u * 2u);
  EXPECT_EQ(frame[0].timestamp, 0u);

  SwitchPointCloud(camera, true);
  ASSERT_TRUE(ReadFrame(camera, &frame, &sequence));
  EXPECT_EQ(sequence, 1u);
  ASSERT_EQ(frame.count(2), 1u);
  EXPECT_EQ(frame[2].type, "kRawDataTypePointCloud");
  EXPECT_EQ(frame[2].timestamp, 33333333u);
  EXPECT_EQ(frame[2].bytes, SceneCloudBytes(5, 1));
  // Channel 0 is the point cloud's z.
  ASSERT_EQ(frame[0].bytes.size() * 3, frame[2].bytes.size());
  EXPECT_EQ(std::memcmp(frame[0].bytes.data() + 2 * 1000, frame[2].bytes.data() + 6 * 1000 + 4, 2),
            0);

  SwitchPointCloud(camera, false);
  ASSERT_TRUE(ReadFrame(camera, &frame));
  EXPECT_EQ(frame.count(2), 0u);
  EXPECT_TRUE(camera->Stop().ok());
  EXPECT_EQ(host.core().allocator().LiveCount(), 0);
}

TEST(SimComponent, ConfidenceChannel) {
  SimHost host(Options(0));
  Stream* camera = host.Open(ZeltoTof::kCamera2StreamKey);
  ASSERT_NE(camera, nullptr);
  ZeltoTof::ZeltoTofProcessTargetsProperty_ targets;
  targets.processConfidence = true;
  ASSERT_TRUE(camera->SetProperty(ZeltoTof::kZeltoTofProcessTargetsKey, &targets).ok());
  ASSERT_TRUE(camera->Start().ok());
  FrameCopy frame;
  ASSERT_TRUE(ReadFrame(camera, &frame));
  ASSERT_EQ(frame.size(), 1u);
  EXPECT_EQ(frame[1].type, "kRawDataTypeConfidence");
  std::vector<uint16_t> depth;
  ZeltoSim::SyntheticScene(5).RenderDepth(0, &depth);
  ASSERT_EQ(frame[1].bytes.size(), depth.size());
  for (size_t i = 0; i < depth.size(); i += 97) {
    EXPECT_EQ(frame[1].bytes[i], depth[i] == 0 ? 0 : 255) << i;
  }
}

TEST(SimComponent, FramesAreWritableUntilReleased) {
  SimHost host(Options(0));
  Stream* camera = host.Open(ZeltoTof::kCamera2StreamKey);
  ASSERT_NE(camera, nullptr);
  SwitchPointCloud(camera, true);
  ASSERT_TRUE(camera->Start().ok());
  weftcore::Frame* frame = nullptr;
  ASSERT_TRUE(camera->GetFrame(&frame, 0).ok());
  ASSERT_NE(frame, nullptr);
  weftcore::Channel* channel = nullptr;
  ASSERT_TRUE(frame->GetChannel(2, &channel).ok());
  weftcore::Channel::RawData raw;
  ASSERT_TRUE(channel->GetRawData(&raw).ok());
  auto* points = static_cast<int16_t*>(raw.address);
  points[2] = 32001;  // what masking does
  weftcore::Channel::RawData again;
  ASSERT_TRUE(channel->GetRawData(&again).ok());
  EXPECT_EQ(static_cast<int16_t*>(again.address)[2], 32001);
  EXPECT_EQ(host.core().allocator().LiveCount(), 2);  // depth and point cloud
  ASSERT_TRUE(camera->ReleaseFrame(frame).ok());
  EXPECT_EQ(host.core().allocator().LiveCount(), 0);
}

TEST(SimComponent, SyntheticInputEndsAfterTheFramesOption) {
  SimHost host(Options(3));
  Stream* camera = host.Open(ZeltoTof::kCamera2StreamKey);
  ASSERT_NE(camera, nullptr);
  FrameCopy frame;
  EXPECT_FALSE(ReadFrame(camera, &frame));  // not started
  ASSERT_TRUE(camera->Start().ok());
  for (uint64_t i = 0; i < 3; ++i) {
    uint64_t sequence = 99;
    ASSERT_TRUE(ReadFrame(camera, &frame, &sequence));
    EXPECT_EQ(sequence, i);
    EXPECT_EQ(frame[0].timestamp, i * 33333333u);
  }
  EXPECT_FALSE(ReadFrame(camera, &frame));
  EXPECT_FALSE(ReadFrame(camera, &frame));
  // Start rewinds.
  ASSERT_TRUE(camera->Stop().ok());
  ASSERT_TRUE(camera->Start().ok());
  uint64_t sequence = 99;
  ASSERT_TRUE(ReadFrame(camera, &frame, &sequence));
  EXPECT_EQ(sequence, 0u);
}

TEST(SimComponent, PlayerStreamIsOptional) {
  {
    SimHost host(Options(0));
    EXPECT_NE(host.Open(ZeltoTof::kCamera2StreamPlaybackKey), nullptr);
  }
  ZeltoSim::HostOptions options = Options(0);
  options.player = false;
  SimHost host(options);
  EXPECT_TRUE(host.TryOpen(ZeltoTof::kCamera2StreamPlaybackKey).IsError());
  EXPECT_NE(host.Open(ZeltoTof::kCamera2StreamKey), nullptr);
}

TEST(SimComponent, PlayerAndCameraShareProcessTargetsButNotTheCursor) {
  SimHost host(Options(0));
  Stream* camera = host.Open(ZeltoTof::kCamera2StreamKey);
  Stream* player = host.Open(ZeltoTof::kCamera2StreamPlaybackKey);
  ASSERT_NE(camera, nullptr);
  ASSERT_NE(player, nullptr);
  SwitchPointCloud(camera, true);  // the mesh source switches it on the camera only
  ASSERT_TRUE(camera->Start().ok());
  ASSERT_TRUE(player->Start().ok());
  FrameCopy frame;
  uint64_t sequence = 99;
  ASSERT_TRUE(ReadFrame(camera, &frame, &sequence));
  ASSERT_TRUE(ReadFrame(player, &frame, &sequence));
  EXPECT_EQ(sequence, 0u);
  EXPECT_EQ(frame.count(2), 1u);
  EXPECT_EQ(frame[2].bytes, SceneCloudBytes(5, 0));
}

TEST(SimComponent, RecordingPlaysOnceInOrder) {
  ZeltoSim::HostOptions options;
  options.sim.input = kRedwood;
  SimHost host(options);
  Stream* camera = host.Open(ZeltoTof::kCamera2StreamKey);
  ASSERT_NE(camera, nullptr);
  ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ configuration;
  ASSERT_TRUE(
      camera->GetProperty(ZeltoTof::kZeltoTofCamera2CurrentConfigurationKey, &configuration).ok());
  EXPECT_EQ(configuration.name, "recording");
  EXPECT_EQ(configuration.width, 640);
  EXPECT_EQ(configuration.intrinsics.cx, 319.5f);
  SwitchPointCloud(camera, true);
  ASSERT_TRUE(camera->Start().ok());
  ZeltoSim::Recording recording;
  ASSERT_TRUE(ZeltoSim::LoadRecording(kRedwood, &recording).ok());
  for (size_t i = 0; i < 5; ++i) {
    FrameCopy frame;
    ASSERT_TRUE(ReadFrame(camera, &frame));
    std::vector<int16_t> points;
    ASSERT_TRUE(ZeltoSim::ReadPointCloudFrame(recording, i, &points).ok());
    ASSERT_EQ(frame[2].bytes.size(), points.size() * 2);
    EXPECT_EQ(std::memcmp(frame[2].bytes.data(), points.data(), frame[2].bytes.size()), 0);
    EXPECT_EQ(frame[2].timestamp, i * 33333333u);
  }
  FrameCopy frame;
  EXPECT_FALSE(ReadFrame(camera, &frame));
}

TEST(SimComponent, RealtimeWaitsForTheNextFramesTime) {
  ZeltoSimTest::TempDirectory dir;
  ZeltoSimTest::MakeDepthRecording(dir.path(), 2, 2, 2);
  ZeltoSimTest::WriteText(dir.path() + "/timestamps.txt", "5000000000\n65000000000\n");
  ZeltoSim::HostOptions options;
  options.sim.input = dir.path();
  options.sim.realtime = true;
  SimHost host(options);
  Stream* camera = host.Open(ZeltoTof::kCamera2StreamKey);
  ASSERT_NE(camera, nullptr);
  ASSERT_TRUE(camera->Start().ok());
  FrameCopy frame;
  ASSERT_TRUE(ReadFrame(camera, &frame));  // the first frame is due at Start
  EXPECT_EQ(frame[0].timestamp, 5000000000u);
  EXPECT_FALSE(ReadFrame(camera, &frame));  // the second one a minute later
}

TEST(SimComponent, BadRecordingFailsTheOpenWithItsMessage) {
  ZeltoSim::HostOptions options;
  options.sim.input = "/nonexistent/recording";
  SimHost host(options);
  const Status status = host.TryOpen(ZeltoTof::kCamera2StreamKey);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.message(), "/nonexistent/recording: not a directory");
}

TEST(SimComponent, BadComponentArgumentFailsTheOpen) {
  weftcore::host::HostConfiguration configuration = ZeltoSim::BuildHostConfiguration(Options(0));
  configuration.components[ZeltoSim::kSimComponentKey].args.values["frames"] = "many";
  HostCore core(configuration, {ZELTO_LIBRARY_DIR});
  Stream* stream = nullptr;
  const Status status = core.OpenStream(Zelto::kStreamKey, &stream);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.message(), "component argument \"frames\": \"many\" is not an unsigned integer");
}

TEST(SimComponent, UnknownSourceTypeFailsTheOpen) {
  weftcore::host::HostConfiguration configuration = ZeltoSim::BuildHostConfiguration(Options(0));
  configuration.streams[Zelto::kStreamKey].type = "settings";
  HostCore core(configuration, {ZELTO_LIBRARY_DIR});
  Stream* stream = nullptr;
  const Status status = core.OpenStream(Zelto::kStreamKey, &stream);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(stream, nullptr);
}

ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_ Request(const std::string& name,
                                                              bool invert) {
  ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_ entry;
  entry.name = name;
  entry.isInvertMask = invert;
  return entry;
}

TEST(SimComponent, MasksOfTheSyntheticScene) {
  SimHost host(Options(0));
  Stream* camera = host.Open(ZeltoTof::kCamera2StreamKey);
  Stream* segmentation = host.Open(ZeltoSegmentation::kSegmentationStreamKey);
  ASSERT_NE(camera, nullptr);
  ASSERT_NE(segmentation, nullptr);
  ASSERT_TRUE(camera->Start().ok());
  ASSERT_TRUE(segmentation->Start().ok());
  FrameCopy frame;
  for (int i = 0; i < 4; ++i) ASSERT_TRUE(ReadFrame(camera, &frame));  // frame 3 is current

  ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_ list;
  list.data = {Request("person", true), Request("nobody", false), Request("floor", false)};
  ASSERT_TRUE(
      segmentation->GetProperty(ZeltoSegmentation::kZeltoSegmentationMaskDataListKey, &list).ok());
  ASSERT_EQ(list.data.size(), 3u);
  const auto& person = list.data[0];
  EXPECT_EQ(person.name, "person");
  EXPECT_NE(person.maskDataAddress, 0u);
  EXPECT_EQ(person.maskDataSize, 256u * 192u);
  EXPECT_EQ(person.maskDataWidth, 256u);
  EXPECT_EQ(person.maskDataHeight, 192u);
  EXPECT_EQ(person.maskDataTimestamp, 3u * 33333333u);
  EXPECT_TRUE(person.isColorSource);
  EXPECT_TRUE(person.isInvertMask);  // kept from the request
  std::vector<uint8_t> expected;
  ZeltoSim::SyntheticScene(5).RenderPersonMask(3, &expected);
  const auto* bytes = reinterpret_cast<const uint8_t*>(person.maskDataAddress);
  EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + person.maskDataSize), expected);

  const auto& nobody = list.data[1];
  EXPECT_EQ(nobody.name, "nobody");
  EXPECT_EQ(nobody.maskDataAddress, 0u);
  EXPECT_EQ(nobody.maskDataSize, 0u);
  EXPECT_EQ(nobody.maskDataWidth, 0u);

  const auto& floor = list.data[2];
  EXPECT_EQ(floor.maskDataWidth, 320u);
  EXPECT_EQ(floor.maskDataHeight, 240u);
  EXPECT_EQ(floor.maskDataSize, 320u * 240u);
  EXPECT_FALSE(floor.isColorSource);
  EXPECT_FALSE(floor.isInvertMask);
  ZeltoSim::SyntheticScene(5).RenderFloorMask(3, &expected);
  bytes = reinterpret_cast<const uint8_t*>(floor.maskDataAddress);
  EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + floor.maskDataSize), expected);

  // The answer of the next read follows the next frame, at the same address.
  const uint64_t address = person.maskDataAddress;
  ASSERT_TRUE(ReadFrame(camera, &frame));
  ASSERT_TRUE(
      segmentation->GetProperty(ZeltoSegmentation::kZeltoSegmentationMaskDataListKey, &list).ok());
  EXPECT_EQ(list.data[0].maskDataAddress, address);
  EXPECT_EQ(list.data[0].maskDataTimestamp, 4u * 33333333u);

  const Status readOnly =
      segmentation->SetProperty(ZeltoSegmentation::kZeltoSegmentationMaskDataListKey, &list);
  EXPECT_EQ(readOnly.message(), "not available to set kZeltoSegmentationMaskDataListKey");
}

}  // namespace
