// The host as a component meets it, driven with the built libraries: loading
// a library, opening streams that fail, frames and their memory, property
// routing, and the checks that keep a faulty source from corrupting memory.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "properties/zelto_tof_properties.h"
#include "support/log_capture.h"
#include "weftcore/host/host_core.h"
#include "weftcore/host/host_stream.h"

namespace {

using namespace weftcore::host;
const std::string kLibraries = ZELTO_LIBRARY_DIR;

// The sim serves a camera (three frames) and the settings stream; the mesh
// source's Open fails, as it finds no camera under the camera's own key.
HostConfiguration Configuration() {
  HostConfiguration configuration;
  configuration.components = {{"sim", {"component_zelto_sim", {{{"frames", "3"}}}}},
                              {"mesh", {"component_zelto_mesh", {}}},
                              {"missing", {"no_such", {}}},
                              {"no entry points", {kLibraries + "/libweftcore.so", {}}}};
  configuration.streams = {{"camera", {"sim", "tof_camera"}}, {"mesh", {"mesh", "mesh"}},
                           {"zelto_stream", {"sim", "zelto_settings"}}, {"odd", {"sim", "odd"}}};
  for (const char* name : {"missing", "no entry points"}) configuration.streams[name] = {name, ""};
  return configuration;
}

TEST(HostCore, FailedOpenSaysWhyLeavesNothingBehindAndCanBeRetried) {
  struct Case { const char* key; int cause; std::string text; };  // how the text starts
  const Case cases[] = {
      {"nowhere", 4, "stream nowhere is not configured"},
      {"missing", 9, "cannot load component library no_such: libno_such.so"},
      {"no entry points", 9,
       "component library " + kLibraries + "/libweftcore.so has no CreateComponent: "},
      {"odd", 4, "component sim does not support source type odd"},
      {"mesh", 4, "stream zelto_tof_camera2_stream is not configured"},  // from the source's Open
  };
  HostCore core(Configuration(), {"/none", kLibraries});
  for (int attempt = 0; attempt < 2; ++attempt) {
    for (const Case& row : cases) {
      SCOPED_TRACE(row.key);
      weftcore::Stream* stream = nullptr;
      const weftcore::Status status = core.OpenStream(row.key, &stream);
      EXPECT_EQ(status.cause(), row.cause);
      EXPECT_EQ(status.message().rfind(row.text, 0), 0u) << status.message();
      EXPECT_EQ(stream, nullptr);
    }
  }
}

// A record too narrow for the camera's 640-pixel width.
struct NarrowConfiguration { int8_t width = 0; MSGPACK_DEFINE_MAP(width); };

TEST(HostStream, HandsOutFramesAndRepliesOnceAndTakesAllMemoryBack) {
  HostCore core(Configuration(), {kLibraries});
  weftcore::Stream* camera = nullptr;
  ASSERT_TRUE(core.OpenStream("camera", &camera).ok() && camera->Start().ok());
  weftcore::Frame* frames[4] = {};
  for (weftcore::Frame*& frame : frames) ASSERT_TRUE(camera->GetFrame(&frame, 1000).ok());
  EXPECT_EQ(frames[3], nullptr);  // the three frames are all there is
  ASSERT_TRUE(camera->ReleaseFrame(frames[0]).ok());
  EXPECT_EQ(camera->ReleaseFrame(frames[0]).message(), "frame is not outstanding on stream camera");
  EXPECT_EQ(core.allocator().LiveCount(), 2);

  // A typed read hands the reply back whether or not it decodes (LSan).
  weftcore::FrameRateProperty rate;
  EXPECT_TRUE(camera->GetProperty(weftcore::kFrameRatePropertyKey, &rate).ok() && rate.num == 30);
  NarrowConfiguration narrow;
  EXPECT_EQ(camera->GetProperty(ZeltoTof::kZeltoTofCamera2CurrentConfigurationKey, &narrow).cause(),
            weftcore::kCauseSerializer);
  EXPECT_EQ(camera->GetProperty("nope", &rate).message(), "property nope is not registered");
  ASSERT_TRUE(core.CloseStream(camera).ok());  // with two frames still out
  EXPECT_EQ(core.allocator().LiveCount(), 0);
}

// Frames paced at 30 per second: the host sleeps until the device signals
// each one, neither running into its 5 s timeout nor handing one out early.
TEST(HostStream, WaitsForAPacedFrameUntilTheDeviceSignalsIt) {
  HostConfiguration configuration = Configuration();
  configuration.components["sim"].args.values["realtime"] = "true";
  HostCore core(configuration, {kLibraries});
  weftcore::Stream* camera = nullptr;
  ASSERT_TRUE(core.OpenStream("camera", &camera).ok());
  const auto start = std::chrono::steady_clock::now();
  ASSERT_TRUE(camera->Start().ok());
  for (int i = 0; i < 3; ++i) {
    weftcore::Frame* frame = nullptr;
    ASSERT_TRUE(camera->GetFrame(&frame, 5000).ok() && frame != nullptr);
    ASSERT_TRUE(camera->ReleaseFrame(frame).ok());
  }
  const auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_GE(elapsed, std::chrono::microseconds(66667));  // frame 2's timestamp
  EXPECT_LT(elapsed, std::chrono::seconds(5));
}

// Makes a PNG's compressed data invalid under chunk checksums that still
// match, as a writer's bug would: only decoding the image finds it.
void BreakImageData(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::string png((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const size_t type = png.find("IDAT");
  png[type + 4] = png[type + 5] = '\xff';  // the zlib stream's header
  size_t length = 0;
  for (size_t i = type - 4; i < type; ++i) length = length << 8 | uint8_t(png[i]);
  uint32_t crc = 0xffffffffu;
  for (size_t i = type; i < type + 4 + length; ++i) {
    crc ^= uint8_t(png[i]);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
  }
  crc = ~crc;
  for (int i = 0; i < 4; ++i) png[type + 4 + length + i] = char(crc >> (24 - 8 * i));
  std::ofstream(path, std::ios::binary | std::ios::trunc) << png;
}

// A frame whose file turns out unreadable ends the delivery there, once
// said: the frames after it are not handed out under its number.
TEST(HostStream, UnreadableFrameStopsTheDeviceWithOneLineNamingTheFile) {
  const auto dir = std::filesystem::temp_directory_path() / ("torn" + std::to_string(getpid()));
  std::filesystem::remove_all(dir);  // left by a crashed run of an earlier process
  std::filesystem::copy(std::string(ZELTO_EXAMPLES_DIR) + "/redwood", dir,
                        std::filesystem::copy_options::recursive);
  BreakImageData((dir / "depth/00001.png").string());
  HostConfiguration configuration = Configuration();
  configuration.components["sim"].args.values = {{"input", dir.string()}};
  HostCore core(configuration, {kLibraries});
  zelto_test::LogCapture log;
  weftcore::Stream* camera = nullptr;
  weftcore::Frame* frames[3] = {};
  ASSERT_TRUE(core.OpenStream("camera", &camera).ok() && camera->Start().ok());
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(camera->GetFrame(&frames[i], i == 0 ? 5000 : 100).ok());
  EXPECT_TRUE(frames[0] != nullptr && frames[1] == nullptr && frames[2] == nullptr);
  // The decoder's own words in the parentheses are not ours to pin.
  const std::string said = "tof_camera: frame delivery stopped: " +
                           (dir / "depth/00001.png").string() + ": not a readable PNG (";
  ASSERT_EQ(log.records().size(), 1u);
  EXPECT_EQ(log.records()[0].type, 16);
  EXPECT_EQ(log.records()[0].tag, "ZeltoSim");
  EXPECT_EQ(log.records()[0].message.substr(0, said.size()), said);
  std::filesystem::remove_all(dir);
}

TEST(HeapAllocator, RefusesABlockItDidNotAllocateAndAFrameRunningPastIt) {
  HeapAllocator mine, other;
  weftcore::Memory* block = nullptr;
  ASSERT_TRUE(mine.Allocate(8, &block).ok());
  EXPECT_EQ(other.Free(block).message(), "memory was not allocated by this allocator");
  HostFrame frame(weftcore::FrameInfo{1, {{2, block, 8, 4, "", 0}}, 0});  // 4 bytes too long
  weftcore::Channel* channel = nullptr;
  weftcore::Channel::RawData raw;
  ASSERT_TRUE(frame.GetChannel(2, &channel).ok());
  EXPECT_EQ(channel->GetRawData(&raw).message(),
            "channel 2 (offset 4, size 8) exceeds its memory of 8 bytes");
  EXPECT_TRUE(mine.Free(block).ok());
}

}  // namespace
