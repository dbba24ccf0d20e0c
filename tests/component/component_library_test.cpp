// Part 1.2 on the BUILT plug-in: libcomponent_zelto_mesh.so loaded with
// dlopen through the weftcore host, and its dynamic symbol table.
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/component/elf_dynamic_symbols.h"
#include "tests/component/fake_upstream.h"
#include "tests/component/pacing_seams.h"
#include "weftcore/host/component_library.h"
#include "weftcore/host/host_core.h"

namespace zelto_test {
namespace {

const std::string kLibraryPath = std::string(ZELTO_LIBRARY_DIR) + "/libcomponent_zelto_mesh.so";

TEST(ComponentLibrary, TheBuiltLibraryRunsTheOrderOfLife) {
  // CreateComponent (inside Load) -> GetSupportedList -> CreateSource("mesh")
  // -> ReleaseSource -> DestroyComponent (when `loaded` goes).
  std::unique_ptr<weftcore::host::ComponentLibrary> loaded;
  const weftcore::Status status =
      weftcore::host::ComponentLibrary::Load("component_zelto_mesh", {ZELTO_LIBRARY_DIR}, &loaded);
  ASSERT_TRUE(status.ok()) << status.message();
  weftcore::StreamSourceFactory* factory = loaded->factory();
  ASSERT_NE(nullptr, factory);

  std::vector<std::pair<std::string, int>> list;
  factory->GetSupportedList(weftcore::ComponentArgument(), &list);
  EXPECT_EQ((std::vector<std::pair<std::string, int>>{{"mesh", 0}}), list);

  weftcore::StreamSource* source = nullptr;
  ASSERT_TRUE(factory->CreateSource(list.at(0), &source).ok());
  ASSERT_NE(nullptr, source);
  // A fresh source answers the framework's frame rate.
  weftcore::FrameRateProperty rate;
  EXPECT_TRUE(source->Get(weftcore::kFrameRatePropertyKey, &rate).ok());
  EXPECT_EQ(30u, rate.num);
  factory->ReleaseSource(source);
  loaded.reset();
}

TEST(ComponentLibrary, TheBuiltLibraryExportsExactlyCreateComponentAndDestroyComponent) {
  std::vector<DynamicSymbol> symbols;
  std::string error;
  ASSERT_TRUE(ReadDefinedDynamicSymbols(kLibraryPath, &symbols, &error)) << error;
  std::set<std::string> exported;
  for (const DynamicSymbol& symbol : symbols) {
    if (!symbol.isGlobal) continue;
    exported.insert(symbol.name);
    EXPECT_TRUE(symbol.isFunction) << symbol.name;
  }
  EXPECT_EQ((std::set<std::string>{"CreateComponent", "DestroyComponent"}), exported);
}

// The whole road through the host with the library loaded by configuration:
// the plug-in opens the fake upstream streams of this program.
TEST(ComponentLibrary, TheHostServesMeshFramesFromTheBuiltLibrary) {
  SleepRecorder sleeps;  // no real pacing sleep
  FakeUpstream upstream;
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 5));
  weftcore::host::HostConfiguration configuration;
  configuration.components["zelto_mesh"].library = "component_zelto_mesh";
  configuration.streams["mesh"] = weftcore::host::StreamEntry{"zelto_mesh", "mesh"};
  upstream.AddTo(&configuration);
  weftcore::host::HostCore core(configuration, {ZELTO_LIBRARY_DIR});
  ASSERT_TRUE(FakeUpstream::Register(&core).ok());

  weftcore::Stream* mesh = nullptr;
  const weftcore::Status opened = core.OpenStream("mesh", &mesh);
  ASSERT_TRUE(opened.ok()) << opened.message();
  ASSERT_TRUE(mesh->Start().ok());
  weftcore::Frame* frame = nullptr;
  ASSERT_TRUE(mesh->GetFrame(&frame, 0).ok());
  ASSERT_NE(nullptr, frame);
  EXPECT_EQ(0u, frame->GetSequenceNumber());
  weftcore::Channel* channel = nullptr;
  ASSERT_TRUE(frame->GetChannel(0, &channel).ok());
  weftcore::Channel::RawData raw;
  ASSERT_TRUE(channel->GetRawData(&raw).ok());
  EXPECT_EQ("kRawDataTypeMesh", raw.type);
  EXPECT_EQ(28u, raw.size);
  EXPECT_EQ(5u, raw.timestamp);
  ASSERT_TRUE(mesh->ReleaseFrame(frame).ok());
  ASSERT_TRUE(mesh->Stop().ok());
  ASSERT_TRUE(core.CloseStream(mesh).ok());
  EXPECT_EQ(0, core.allocator().LiveCount());
  EXPECT_TRUE(core.OpenStreamKeys().empty());
  EXPECT_EQ(1, upstream.Camera().counts.closes);
}

}  // namespace
}  // namespace zelto_test
