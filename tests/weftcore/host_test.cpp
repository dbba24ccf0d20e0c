// The host as a component meets it, driven with the built libraries: loading
// a library, opening streams that fail, frames and their memory, property
// routing, and the checks that keep a faulty source from corrupting memory.
#include <gtest/gtest.h>

#include "weftcore/host/host_core.h"
#include "weftcore/host/host_stream.h"

namespace {

using weftcore::Status;
using namespace weftcore::host;

const std::string kLibraries = ZELTO_LIBRARY_DIR;

TEST(ComponentLibrary, LoadsAComponentOrSaysWhyNot) {
  struct Case { const char* name; std::string library; int cause; std::string text; };
  const Case cases[] = {
      {"by name from the search path", "component_zelto_sim", 0, ""},
      {"by path", kLibraries + "/libcomponent_zelto_sim.so", 0, ""},
      {"missing", "no_such", 9, "cannot load component library no_such: libno_such.so"},
      {"without entry points", kLibraries + "/libweftcore.so", 9,
       "component library " + kLibraries + "/libweftcore.so has no CreateComponent: "},
      {"empty name", "", 2, "component library name is empty"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    std::unique_ptr<ComponentLibrary> library;
    const Status status = ComponentLibrary::Load(row.library, {"/nonexistent", kLibraries}, &library);
    EXPECT_EQ(status.cause(), row.cause);
    EXPECT_EQ(status.message().rfind(row.text, 0), 0u) << status.message();
    EXPECT_EQ(library != nullptr && library->factory() != nullptr, row.cause == 0);
  }
}

// The sim serves the camera and the settings stream; the mesh source's Open
// fails because it needs a camera under the camera's own key.
HostConfiguration Configuration() {
  HostConfiguration configuration;
  configuration.components["sim"] = {"component_zelto_sim", {{{"frames", "3"}}}};
  configuration.components["mesh"] = {"component_zelto_mesh", {}};
  configuration.streams["camera"] = {"sim", "tof_camera"};
  configuration.streams["zelto_stream"] = {"sim", "zelto_settings"};
  configuration.streams["mesh"] = {"mesh", "mesh"};
  configuration.streams["odd type"] = {"sim", "odd"};
  configuration.streams["ghost"] = {"ghost", "ghost"};
  return configuration;
}

TEST(HostCore, FailedOpenLeavesNothingOpenAndCanBeRetried) {
  struct Case { const char* key; int cause; const char* text; };
  const Case cases[] = {
      {"nowhere", 4, "stream nowhere is not configured"},
      {"odd type", 4, "component sim does not support source type odd"},
      {"ghost", 4, "component ghost is neither registered nor configured"},
      {"mesh", 4, "stream zelto_tof_camera2_stream is not configured"},  // Open itself fails
  };
  HostCore core(Configuration(), {kLibraries});
  for (const Case& row : cases) {
    SCOPED_TRACE(row.key);
    for (int attempt = 0; attempt < 2; ++attempt) {
      weftcore::Stream* stream = nullptr;
      const Status status = core.OpenStream(row.key, &stream);
      EXPECT_EQ(status.cause(), row.cause);
      EXPECT_EQ(status.message(), row.text);
      EXPECT_EQ(stream, nullptr);
    }
  }
}

TEST(HostStream, HandsOutFramesOnceAndTakesAllMemoryBackOnClose) {
  HostCore core(Configuration(), {kLibraries});
  weftcore::Stream* camera = nullptr;
  ASSERT_TRUE(core.OpenStream("camera", &camera).ok());
  ASSERT_TRUE(camera->Start().ok());
  weftcore::Frame* frames[3] = {};
  for (weftcore::Frame*& frame : frames) ASSERT_TRUE(camera->GetFrame(&frame, 1000).ok());
  weftcore::Frame* none = frames[0];
  EXPECT_TRUE(camera->GetFrame(&none, 0).ok());  // the recording has ended
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(camera->GetFrame(&none, -1).message(), "timeout_msec is negative: -1");
  EXPECT_EQ(core.allocator().LiveCount(), 3);

  ASSERT_TRUE(camera->ReleaseFrame(frames[0]).ok());
  EXPECT_EQ(camera->ReleaseFrame(frames[0]).message(), "frame is not outstanding on stream camera");
  EXPECT_EQ(core.allocator().LiveCount(), 2);
  void* reply = nullptr;
  size_t size = 0;
  EXPECT_EQ(camera->GetSerializedProperty("nope", nullptr, 0, &reply, &size).message(),
            "property nope is not registered");
  EXPECT_EQ(camera->SetSerializedProperty("nope", nullptr, 0).cause(), weftcore::kCauseNotFound);
  ASSERT_TRUE(core.CloseStream(camera).ok());  // with two frames still out
  EXPECT_EQ(core.allocator().LiveCount(), 0);
}

TEST(HeapAllocator, RefusesABlockItDidNotAllocate) {
  HeapAllocator mine, other;
  weftcore::Memory* block = nullptr;
  ASSERT_TRUE(mine.Allocate(8, &block).ok());
  EXPECT_EQ(other.Free(block).message(), "memory was not allocated by this allocator");
  EXPECT_TRUE(mine.Free(block).ok());
  EXPECT_EQ(mine.LiveCount(), 0);
}

TEST(HostFrame, RefusesAChannelThatRunsPastItsMemory) {
  HeapAllocator allocator;
  weftcore::Memory* block = nullptr;
  ASSERT_TRUE(allocator.Allocate(8, &block).ok());
  weftcore::FrameInfo info;
  info.channels = {{2, block, 8, 4, "kRawDataTypeMesh", 0}, {3, block, 4, 4, "", 0}};
  HostFrame frame(info);
  weftcore::Channel* channel = nullptr;
  weftcore::Channel::RawData raw;
  ASSERT_TRUE(frame.GetChannel(2, &channel).ok());
  EXPECT_EQ(channel->GetRawData(&raw).message(),
            "channel 2 (offset 4, size 8) exceeds its memory of 8 bytes");
  ASSERT_TRUE(frame.GetChannel(3, &channel).ok());
  ASSERT_TRUE(channel->GetRawData(&raw).ok());
  EXPECT_EQ(raw.address, static_cast<uint8_t*>(block->GetAddress()) + 4);
  EXPECT_TRUE(allocator.Free(block).ok());
}

}  // namespace
