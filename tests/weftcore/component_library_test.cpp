// Loading component libraries with dlopen, and in-process entry points.
#include "weftcore/host/component_library.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <gtest/gtest.h>

#include "weftcore/host/host_core.h"
#include "weftcore/host/host_stream.h"

namespace {

using weftcore::Status;
using weftcore::host::ComponentLibrary;

constexpr char kTicker[] = "weftcore_test_component";
constexpr char kNoDestroy[] = "weftcore_test_component_no_destroy";
const std::string kLibraryDir = ZELTO_LIBRARY_DIR;

std::vector<std::pair<std::string, int>> SupportedList(ComponentLibrary& library) {
  std::vector<std::pair<std::string, int>> list;
  library.factory()->GetSupportedList(weftcore::ComponentArgument(), &list);
  return list;
}

TEST(ComponentLibrary, LoadsLibNameSoFromTheSearchPath) {
  std::unique_ptr<ComponentLibrary> library;
  const Status status = ComponentLibrary::Load(kTicker, {"/nonexistent", kLibraryDir}, &library);
  ASSERT_TRUE(status.ok()) << status.message();
  EXPECT_EQ(library->name(), kTicker);
  ASSERT_NE(library->factory(), nullptr);
  EXPECT_EQ(SupportedList(*library),
            (std::vector<std::pair<std::string, int>>{{"ticker", 3}}));
}

TEST(ComponentLibrary, LoadsAPathContainingASlash) {
  std::unique_ptr<ComponentLibrary> library;
  const std::string path = kLibraryDir + "/lib" + kTicker + ".so";
  ASSERT_TRUE(ComponentLibrary::Load(path, {}, &library).ok());
  EXPECT_EQ(library->name(), path);
  EXPECT_EQ(SupportedList(*library).size(), 1u);
}

TEST(ComponentLibrary, MissingLibraryFailsNamingItWithDlerrorText) {
  std::unique_ptr<ComponentLibrary> library;
  const Status status =
      ComponentLibrary::Load("weftcore_no_such_component", {kLibraryDir}, &library);
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), weftcore::kCauseLibraryLoad);
  EXPECT_EQ(status.block(), "core");
  EXPECT_EQ(status.message(),
            "cannot load component library weftcore_no_such_component: "
            "libweftcore_no_such_component.so: cannot open shared object file: "
            "No such file or directory");
  EXPECT_EQ(library, nullptr);
}

TEST(ComponentLibrary, MissingPathFailsNamingItWithDlerrorText) {
  std::unique_ptr<ComponentLibrary> library;
  const Status status = ComponentLibrary::Load("/nonexistent/libx.so", {}, &library);
  EXPECT_EQ(status.cause(), weftcore::kCauseLibraryLoad);
  EXPECT_EQ(status.message(),
            "cannot load component library /nonexistent/libx.so: /nonexistent/libx.so: "
            "cannot open shared object file: No such file or directory");
}

TEST(ComponentLibrary, MissingEntryPointFailsNamingLibraryAndSymbol) {
  std::unique_ptr<ComponentLibrary> library;
  const Status status = ComponentLibrary::Load(kNoDestroy, {kLibraryDir}, &library);
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), weftcore::kCauseLibraryLoad);
  EXPECT_EQ(status.block(), "core");
  EXPECT_EQ(status.message(), std::string("component library ") + kNoDestroy +
                                  " has no DestroyComponent: " + kLibraryDir + "/lib" +
                                  kNoDestroy + ".so: undefined symbol: DestroyComponent");
  EXPECT_EQ(library, nullptr);
}

TEST(ComponentLibrary, EmptyNameFailsWithCause2) {
  std::unique_ptr<ComponentLibrary> library;
  const Status status = ComponentLibrary::Load("", {kLibraryDir}, &library);
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.message(), "component library name is empty");
}

int destroyed_components = 0;

weftcore::StandardComponent* CreateNothing() { return nullptr; }
weftcore::StandardComponent* CreateThrowing() { throw std::runtime_error("boom"); }
weftcore::StandardComponent* CreateWithoutFactory() {
  return new weftcore::StandardComponent(nullptr);
}
void DestroyCounting(weftcore::StandardComponent* component) {
  ++destroyed_components;
  delete component;
}

TEST(ComponentLibrary, EntryPointsReturningNullFailWithCause9) {
  std::unique_ptr<ComponentLibrary> library;
  const Status status =
      ComponentLibrary::FromEntryPoints("nothing", CreateNothing, DestroyCounting, &library);
  EXPECT_EQ(status.cause(), weftcore::kCauseLibraryLoad);
  EXPECT_EQ(status.message(), "CreateComponent of nothing returned null");
  EXPECT_EQ(library, nullptr);
}

TEST(ComponentLibrary, ThrowingCreateComponentFailsWithTheExceptionText) {
  std::unique_ptr<ComponentLibrary> library;
  const Status status =
      ComponentLibrary::FromEntryPoints("thrower", CreateThrowing, DestroyCounting, &library);
  EXPECT_EQ(status.cause(), weftcore::kCauseLibraryLoad);
  EXPECT_EQ(status.message(), "CreateComponent of thrower threw: boom");
}

TEST(ComponentLibrary, ComponentWithoutFactoryFailsAndIsDestroyed) {
  destroyed_components = 0;
  std::unique_ptr<ComponentLibrary> library;
  const Status status = ComponentLibrary::FromEntryPoints("bare", CreateWithoutFactory,
                                                          DestroyCounting, &library);
  EXPECT_EQ(status.message(), "component bare has no source factory");
  EXPECT_EQ(destroyed_components, 1);
}

TEST(ComponentLibrary, NullEntryPointFailsWithCause2) {
  std::unique_ptr<ComponentLibrary> library;
  const Status status =
      ComponentLibrary::FromEntryPoints("x", nullptr, DestroyCounting, &library);
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.message(), "Null pointer");
}

TEST(DefaultSearchPaths, EnvironmentDirectoriesComeFirstThenProgramDirAndItsLib) {
  ::setenv("WEFTCORE_COMPONENT_PATH", "/first::/second", 1);
  const std::vector<std::string> paths = weftcore::host::DefaultSearchPaths();
  ::unsetenv("WEFTCORE_COMPONENT_PATH");
  const std::string program_dir =
      std::filesystem::canonical(ZELTO_BINARY_DIR).string();
  const std::string library_dir = std::filesystem::canonical(ZELTO_LIBRARY_DIR).string();
  EXPECT_EQ(paths, (std::vector<std::string>{"/first", "/second", program_dir, library_dir}));
}

// The whole road through a dlopen'ed library: configuration, load, open,
// frames, properties, close, unload.
TEST(HostCoreWithLibrary, OpensAStreamOfALoadedLibraryAndDeliversItsFrames) {
  weftcore::host::HostConfiguration configuration;
  configuration.components["ticker"] = {kTicker, {}};
  configuration.streams["ticks"] = {"ticker", "ticker"};
  weftcore::host::HostCore core(configuration, {kLibraryDir});

  weftcore::Stream* stream = nullptr;
  ASSERT_TRUE(core.OpenStream("ticks", &stream).ok());
  ASSERT_TRUE(stream->Start().ok());
  for (uint32_t expected = 1; expected <= 3; ++expected) {
    weftcore::Frame* frame = nullptr;
    ASSERT_TRUE(stream->GetFrame(&frame, 0).ok());
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->GetSequenceNumber(), expected);
    weftcore::Channel* channel = nullptr;
    ASSERT_TRUE(frame->GetChannel(0, &channel).ok());
    weftcore::Channel::RawData raw;
    ASSERT_TRUE(channel->GetRawData(&raw).ok());
    uint32_t value = 0;
    ASSERT_EQ(raw.size, sizeof(value));
    std::memcpy(&value, raw.address, sizeof(value));
    EXPECT_EQ(value, expected);
    EXPECT_EQ(raw.type, "ticker");
    EXPECT_EQ(raw.timestamp, 100u * expected);
    EXPECT_TRUE(stream->ReleaseFrame(frame).ok());
  }
  weftcore::FrameRateProperty rate;
  ASSERT_TRUE(stream->GetProperty(weftcore::kFrameRatePropertyKey, &rate).ok());
  EXPECT_EQ(rate.num, 10u);
  EXPECT_EQ(rate.denom, 1u);
  EXPECT_TRUE(stream->Stop().ok());
  EXPECT_TRUE(core.CloseStream(stream).ok());
  EXPECT_EQ(core.allocator().LiveCount(), 0);
  EXPECT_EQ(core.allocator().TotalAllocations(), 3);
}

TEST(HostCoreWithLibrary, DefaultSearchPathFindsLibrariesBesideTheProgram) {
  weftcore::host::HostConfiguration configuration;
  configuration.components["ticker"] = {kTicker, {}};
  configuration.streams["ticks"] = {"ticker", "ticker"};
  weftcore::host::HostCore core(configuration);
  weftcore::Stream* stream = nullptr;
  const Status status = core.OpenStream("ticks", &stream);
  EXPECT_TRUE(status.ok()) << status.message();
}

TEST(HostCoreWithLibrary, UnloadableLibraryFailsOpenStreamWithTheLoadError) {
  weftcore::host::HostConfiguration configuration;
  configuration.components["broken"] = {kNoDestroy, {}};
  configuration.streams["s"] = {"broken", "x"};
  weftcore::host::HostCore core(configuration, {kLibraryDir});
  weftcore::Stream* stream = nullptr;
  const Status status = core.OpenStream("s", &stream);
  EXPECT_EQ(status.cause(), weftcore::kCauseLibraryLoad);
  EXPECT_EQ(status.message().rfind(std::string("component library ") + kNoDestroy, 0), 0u);
  EXPECT_EQ(status.trace().size(), 2u);
  EXPECT_EQ(stream, nullptr);
}

}  // namespace
