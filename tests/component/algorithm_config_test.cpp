// Part 2.2: the mesh algorithm configuration handlers, and their effect on
// the frames.
#include <climits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mesh/mesh_algorithm_config_property.h"
#include "tests/component/mesh_source_test.h"

namespace zelto_test {
namespace {

using Records = std::vector<PlatformLogRecord>;
using Config = ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_;

Config MakeConfig(int32_t level, int32_t period) {
  Config config;
  config.meshReductionLevel = level;
  config.resetTrianglePeriod = period;
  return config;
}

Config Get(ZeltoMeshStreamSource& source) {
  Config config = MakeConfig(-7, -7);
  EXPECT_TRUE(source.Get(ZeltoMesh::kZeltoMeshAlgorithmConfigKey, &config).ok());
  return config;
}

weftcore::Status Set(ZeltoMeshStreamSource& source, int32_t level, int32_t period) {
  const Config config = MakeConfig(level, period);
  return source.Set(ZeltoMesh::kZeltoMeshAlgorithmConfigKey, &config);
}

void ExpectInvalidArgument(const weftcore::Status& status, const std::string& message) {
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(weftcore::kLevelError, status.level());
  EXPECT_EQ(weftcore::kCauseInvalidArgument, status.cause());
  EXPECT_EQ(message, status.message());
  EXPECT_EQ("ZeltoMesh", status.block());
}

void ExpectConfig(ZeltoMeshStreamSource& source, int32_t level, int32_t period) {
  const Config config = Get(source);
  EXPECT_EQ(level, config.meshReductionLevel);
  EXPECT_EQ(period, config.resetTrianglePeriod);
}

class AlgorithmConfigTest : public ::testing::Test {
 protected:
  AlgorithmConfigTest() { StreamSourceLogger().SetLogLevel(ZeltoLogger::Debug); }
  LoggerLevelGuard loggerLevel;
  LogRecorder logs;
  ZeltoMeshStreamSource source;
};

TEST_F(AlgorithmConfigTest, AFreshlyConstructedSourceReportsLevel0AndPeriod4) {
  ExpectConfig(source, 0, 4);
}

TEST_F(AlgorithmConfigTest, Set2And0ThenGetGives2And4) {
  EXPECT_TRUE(Set(source, 2, 0).ok());
  ExpectConfig(source, 2, 4);
}

TEST_F(AlgorithmConfigTest, SetStoresBothValues) {
  EXPECT_TRUE(Set(source, 3, 9).ok());
  ExpectConfig(source, 3, 9);
  EXPECT_EQ(3, ZeltoMeshStreamSourceTestPeer(&source).meshBuilder().meshReductionLevel.load());
  EXPECT_EQ(9, ZeltoMeshStreamSourceTestPeer(&source).meshBuilder().resetTrianglePeriod.load());
}

TEST_F(AlgorithmConfigTest, SetMinus1And5FailsOnTheReductionLevelAndChangesNothing) {
  ASSERT_TRUE(Set(source, 2, 7).ok());
  ExpectInvalidArgument(Set(source, -1, 5),
                        "mesh reduction level must be equal or greater than zero.");
  ExpectConfig(source, 2, 7);
}

TEST_F(AlgorithmConfigTest, Set3AndMinus2FailsOnThePeriodAndStoresNeitherValue) {
  ASSERT_TRUE(Set(source, 2, 7).ok());
  ExpectInvalidArgument(Set(source, 3, -2),
                        "resetTrianglePeriod must be equal or greater than zero.");
  ExpectConfig(source, 2, 7);
}

TEST_F(AlgorithmConfigTest, BothNegativeReportsOnlyTheReductionLevel) {
  ExpectInvalidArgument(Set(source, -1, -1),
                        "mesh reduction level must be equal or greater than zero.");
  ExpectConfig(source, 0, 4);
}

TEST_F(AlgorithmConfigTest, NullRecordFailsForGetAndSet) {
  ExpectInvalidArgument(source.Get(ZeltoMesh::kZeltoMeshAlgorithmConfigKey,
                                   static_cast<Config*>(nullptr)),
                        "property is null.");
  ExpectInvalidArgument(source.Set(ZeltoMesh::kZeltoMeshAlgorithmConfigKey,
                                   static_cast<const Config*>(nullptr)),
                        "property is null.");
  ExpectConfig(source, 0, 4);
}

TEST_F(AlgorithmConfigTest, GetAndSetLogOneLineOnEntryWithTheKeyAndTheRecord) {
  Config config = MakeConfig(1, 2);
  ASSERT_TRUE(source.Set("kZeltoMeshAlgorithmConfigKey", &config).ok());
  ASSERT_TRUE(source.Get("kZeltoMeshAlgorithmConfigKey", &config).ok());
  const std::string pointer = Printf("%p", static_cast<const void*>(&config));
  EXPECT_EQ((Records{MeshDebugRecord("[ZeltoMesh] Set ZeltoMeshAlgorithmConfigProperty by "
                                     "key=kZeltoMeshAlgorithmConfigKey prop=" + pointer + "\n"),
                     MeshDebugRecord("[ZeltoMesh] Get ZeltoMeshAlgorithmConfigProperty by "
                                     "key=kZeltoMeshAlgorithmConfigKey prop=" + pointer + "\n")}),
            logs.Records());
}

// --- Effect on the frames ---------------------------------------------------

class AlgorithmConfigFramesTest : public MeshSourceTest {
 protected:
  void OpenAndStart() {
    upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
    ASSERT_NO_FATAL_FAILURE(OpenMesh());
    ASSERT_TRUE(source().Start().ok());
  }
  ZeltoMesh::MeshFrameData NextRecord() {
    const std::vector<weftcore::FrameInfo> frames = GetFrames();
    EXPECT_EQ(1u, frames.size());
    return frames.empty() ? ZeltoMesh::MeshFrameData() : ReadMeshRecord(frames[0].channels[0]);
  }
};

TEST_F(AlgorithmConfigFramesTest, Set0And1EveryFrameIsAReFitFrame) {
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  ASSERT_TRUE(Set(source(), 0, 1).ok());
  for (int frame = 0; frame < 5; ++frame) {
    SCOPED_TRACE(frame);
    EXPECT_EQ(1, NextRecord().resetTriangle);
  }
}

TEST_F(AlgorithmConfigFramesTest, TheDefaultPeriod4ReFitsEveryFourthFrame) {
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  std::vector<int> resets;
  for (int frame = 0; frame < 8; ++frame) resets.push_back(NextRecord().resetTriangle);
  EXPECT_EQ((std::vector<int>{0, 0, 0, 1, 0, 0, 0, 1}), resets);
}

TEST_F(AlgorithmConfigFramesTest, AReductionLevelAtLeastAsLargeAsTheImageGivesOneVertexNoTriangles) {
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  ASSERT_TRUE(Set(source(), kFakeImageWidth, 0).ok());
  const ZeltoMesh::MeshFrameData record = NextRecord();
  EXPECT_EQ(1, record.vertexCount);
  EXPECT_EQ(0, record.triangleCount);
}

TEST_F(AlgorithmConfigFramesTest, TheLevel2147483647WrapsTheStepAndYieldsAnEmptyMesh) {
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  ASSERT_TRUE(Set(source(), INT32_MAX, 0).ok());
  const ZeltoMesh::MeshFrameData record = NextRecord();
  EXPECT_EQ(0, record.vertexCount);
  EXPECT_EQ(0, record.triangleCount);
}

TEST_F(AlgorithmConfigFramesTest, ALevelChangeTakesEffectOnTheNextFrame) {
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  EXPECT_EQ(12, NextRecord().vertexCount);
  ASSERT_TRUE(Set(source(), 1, 0).ok());
  EXPECT_EQ(4, NextRecord().vertexCount);  // ceil(4 / 2) x ceil(3 / 2)
}

}  // namespace
}  // namespace zelto_test
