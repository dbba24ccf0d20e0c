// The host as a component meets it, driven with the built libraries: loading
// a library, opening streams that fail, frames and their memory, property
// routing, and the checks that keep a faulty source from corrupting memory.
#include <gtest/gtest.h>

#include "properties/zelto_tof_properties.h"
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
