// Part 1.2: the exported entry points and the source factory.
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "component/component_entry.h"
#include "component/zelto_mesh_sourcefactory.h"
#include "component/zelto_mesh_streamsource.h"
#include "tests/component/mesh_record.h"
#include "tests/component/source_test_peer.h"

namespace {

using SupportedList = std::vector<std::pair<std::string, int>>;
using zelto_test::VerticesOf;

TEST(ComponentEntry, CreateComponentHoldsAMeshSourceFactory) {
  weftcore::StandardComponent* component = CreateComponent();
  ASSERT_NE(nullptr, component);
  auto* factory = dynamic_cast<ZeltoMeshSourceFactory*>(component->GetFactory());
  ASSERT_NE(nullptr, factory);

  weftcore::StreamSource* source = nullptr;
  const weftcore::Status status = factory->CreateSource({"mesh", 0}, &source);
  EXPECT_TRUE(status.ok());
  EXPECT_NE(nullptr, dynamic_cast<ZeltoMeshStreamSource*>(source));
  factory->ReleaseSource(source);
  DestroyComponent(component);
}

TEST(ComponentEntry, DestroyComponentWithNullHasNoEffect) {
  DestroyComponent(nullptr);
  // The library keeps working afterwards.
  weftcore::StandardComponent* component = CreateComponent();
  ASSERT_NE(nullptr, component);
  DestroyComponent(component);
}

TEST(SourceFactory, GetSupportedListOnAnEmptyListGivesMeshZero) {
  ZeltoMeshSourceFactory factory;
  SupportedList list;
  factory.GetSupportedList(weftcore::ComponentArgument(), &list);
  EXPECT_EQ((SupportedList{{"mesh", 0}}), list);
}

TEST(SourceFactory, GetSupportedListOnAListThatAlreadyHoldsEntriesAppendsMeshAtTheEnd) {
  ZeltoMeshSourceFactory factory;
  SupportedList list{{"depth", 3}, {"mesh", 1}};
  factory.GetSupportedList(weftcore::ComponentArgument(), &list);
  EXPECT_EQ((SupportedList{{"depth", 3}, {"mesh", 1}, {"mesh", 0}}), list);
}

TEST(SourceFactory, GetSupportedListIgnoresTheArguments) {
  ZeltoMeshSourceFactory factory;
  weftcore::ComponentArgument args;
  args.values["type"] = "depth";
  SupportedList list;
  factory.GetSupportedList(args, &list);
  EXPECT_EQ((SupportedList{{"mesh", 0}}), list);
}

TEST(SourceFactory, CreateSourceWithATypeDifferingFromMeshInCaseOrMerelyBeginningWithMesh) {
  ZeltoMeshSourceFactory factory;
  // Any recognisable value: it must come back untouched.
  auto* const untouched = reinterpret_cast<weftcore::StreamSource*>(uintptr_t{0x5eed});
  for (const std::string& type : {std::string("Mesh"), std::string("MESH"), std::string("meSh"),
                                  std::string("meshes"), std::string("mesh_stream"),
                                  std::string("mesh\0", 5), std::string("mes"), std::string()}) {
    SCOPED_TRACE(type);
    weftcore::StreamSource* source = untouched;
    const weftcore::Status status = factory.CreateSource({type, 0}, &source);
    EXPECT_TRUE(status.ok());
    EXPECT_EQ(untouched, source);
  }
}

TEST(SourceFactory, CreateSourceIgnoresTheSecondHalfOfTheType) {
  ZeltoMeshSourceFactory factory;
  weftcore::StreamSource* source = nullptr;
  EXPECT_TRUE(factory.CreateSource({"mesh", 7}, &source).ok());
  EXPECT_NE(nullptr, dynamic_cast<ZeltoMeshStreamSource*>(source));
  factory.ReleaseSource(source);
}

TEST(SourceFactory, EachCreateSourceMakesAnIndependentSource) {
  ZeltoMeshSourceFactory factory;
  weftcore::StreamSource* first = nullptr;
  weftcore::StreamSource* second = nullptr;
  ASSERT_TRUE(factory.CreateSource({"mesh", 0}, &first).ok());
  ASSERT_TRUE(factory.CreateSource({"mesh", 0}, &second).ok());
  EXPECT_NE(first, second);
  factory.ReleaseSource(first);
  factory.ReleaseSource(second);
}

// Deviation (docs/deviations.md): a null output pointer for "mesh"
// is refused instead of written through.
TEST(SourceFactory, CreateSourceOfMeshIntoANullPointerFails) {
  ZeltoMeshSourceFactory factory;
  const weftcore::Status status = factory.CreateSource({"mesh", 0}, nullptr);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(weftcore::kLevelError, status.level());
  EXPECT_EQ(weftcore::kCauseInvalidArgument, status.cause());
  EXPECT_EQ("Null pointer", status.message());
  EXPECT_EQ("ZeltoMesh", status.block());
}

TEST(SourceFactory, ReleaseSourceOfNullIsIgnored) {
  ZeltoMeshSourceFactory factory;
  factory.ReleaseSource(nullptr);
  weftcore::StreamSource* source = nullptr;
  EXPECT_TRUE(factory.CreateSource({"mesh", 0}, &source).ok());
  EXPECT_NE(nullptr, source);
  factory.ReleaseSource(source);
}

// Part 1.3's table: every member after construction.
TEST(MeshSourceConstruction, MembersHaveTheirInitialValues) {
  ZeltoMeshStreamSource source;
  const ZeltoMeshStreamSourceTestPeer peer(&source);
  EXPECT_EQ(0u, peer.frameCount());
  EXPECT_EQ(nullptr, peer.core());
  EXPECT_EQ(nullptr, peer.zeltoStream());
  EXPECT_EQ(nullptr, peer.inputStream());
  EXPECT_EQ(nullptr, peer.camera2Stream());
  EXPECT_EQ(nullptr, peer.playerStream());
  EXPECT_EQ(nullptr, peer.segmentationStream());
  EXPECT_EQ(nullptr, peer.allocator());
  EXPECT_FALSE(peer.flatRawData());
  EXPECT_FALSE(peer.frameRate30());
  EXPECT_FALSE(peer.usePlayback());
  EXPECT_EQ(0, peer.meshBuilder().meshReductionLevel.load());
  EXPECT_EQ(4, peer.meshBuilder().resetTrianglePeriod.load());
  EXPECT_EQ(0, peer.meshBuilder().frameCounter());
  EXPECT_EQ(nullptr, VerticesOf(peer.meshBuilder().first()));
  EXPECT_EQ(nullptr, VerticesOf(peer.meshBuilder().second()));
  EXPECT_EQ(0.0f, peer.cx());
  EXPECT_EQ(0.0f, peer.cy());
  EXPECT_EQ(0.0f, peer.fx());
  EXPECT_EQ(0.0f, peer.fy());
  EXPECT_EQ(0, peer.width());
  EXPECT_EQ(0, peer.height());
  EXPECT_FALSE(peer.maskSettings().enabled);
  EXPECT_TRUE(peer.maskSettings().maskInfo.empty());
  EXPECT_EQ(55, peer.maskSettings().maskThreshold);
  EXPECT_TRUE(peer.maskDataList().data.empty());
  EXPECT_EQ(55, peer.maskedPointCloud().maskThreshold);
  EXPECT_EQ(nullptr, peer.maskedPointCloud().stream);
  EXPECT_EQ(0, peer.lastFrameTime().time_since_epoch().count());
}

TEST(MeshSourceConstruction, OneArgumentOpenKeepsTheFrameworkDefault) {
  ZeltoMeshStreamSource source;
  const weftcore::Status status = source.Open(static_cast<weftcore::StreamSourceUtility*>(nullptr));
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(weftcore::kCauseNotImplemented, status.cause());
  EXPECT_EQ("StreamSource::Open is not implemented.", status.message());
  EXPECT_EQ("core", status.block());
}

}  // namespace
