// Properties through their serialized path: the options that set them,
// --set, --get with --hex, --log-level, and `info`.
#include <gtest/gtest.h>

#include "cli_test_helpers.h"

namespace ZeltoCliTest {
namespace {

ProcessResult RunOneFrame(std::vector<std::string> extra) {
  std::vector<std::string> arguments = {"run", "--frames", "1", "--format", "none", "--quiet"};
  arguments.insert(arguments.end(), extra.begin(), extra.end());
  return RunZeltoMesh(arguments, FreshDirectory("work"));
}

TEST(ZeltoMeshProperties, ReductionThenGetWithHex) {
  const ProcessResult result =
      RunOneFrame({"--reduction", "2", "--get", "kZeltoMeshAlgorithmConfigKey", "--hex"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  // 82 | b2 "meshReductionLevel" | 02 | b3 "resetTrianglePeriod" | 04
  EXPECT_EQ(result.out,
            "kZeltoMeshAlgorithmConfigKey {\"meshReductionLevel\":2,\"resetTrianglePeriod\":4}\n"
            "82"
            "b2" "6d657368526564756374696f6e4c6576656c"
            "02"
            "b3" "7265736574547269616e676c65506572696f64"
            "04\n");
  EXPECT_EQ(result.err, "");
}

TEST(ZeltoMeshProperties, ResetPeriodAloneKeepsTheReductionLevel) {
  const ProcessResult result = RunOneFrame(
      {"--set", R"(kZeltoMeshAlgorithmConfigKey={"meshReductionLevel":5})", "--reset-period", "9",
       "--get", "kZeltoMeshAlgorithmConfigKey"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  // --reset-period is applied before --set; the map without the period
  // (decoded as 0) keeps it (Part 2.2).
  EXPECT_EQ(result.out,
            "kZeltoMeshAlgorithmConfigKey {\"meshReductionLevel\":5,\"resetTrianglePeriod\":9}\n");
}

TEST(ZeltoMeshProperties, MaskOptionsBecomeTheMaskSettings) {
  const ProcessResult result =
      RunOneFrame({"--mask", "person", "--mask", "floor:depth:invert", "--mask-threshold", "200",
                   "--get", "kZeltoMeshMaskSettingsKey"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.out,
            "kZeltoMeshMaskSettingsKey {\"enabled\":true,\"maskInfo\":["
            "{\"name\":\"person\",\"isColorSource\":true,\"isInvertMask\":false},"
            "{\"name\":\"floor\",\"isColorSource\":false,\"isInvertMask\":true}],"
            "\"maskThreshold\":200}\n");
}

TEST(ZeltoMeshProperties, SetSendsAnyRecordAndGetsPrintInOrder) {
  const ProcessResult result = RunOneFrame(
      {"--set", R"(kZeltoMeshMaskSettingsKey={"maskThreshold":7})", "--set",
       R"(kZeltoLogLevelKey={"logLevel":6})", "--get", "kZeltoLogLevelKey", "--get",
       "kZeltoMeshMaskSettingsKey", "--hex"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.out,
            "kZeltoLogLevelKey {\"logLevel\":6}\n"
            "81a86c6f674c6576656c06\n"
            "kZeltoMeshMaskSettingsKey {\"enabled\":false,\"maskInfo\":[],\"maskThreshold\":7}\n"
            "83a7656e61626c6564c2a86d61736b496e666f90ad6d61736b5468726573686f6c6407\n");
}

TEST(ZeltoMeshProperties, FrameRateReadsBackAsThirty) {
  const ProcessResult result =
      RunOneFrame({"--frame-rate", "60/1", "--get", "frame_rate_property", "--hex"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.out,
            "frame_rate_property {\"num\":30,\"denom\":1}\n"
            "82a36e756d1ea564656e6f6d01\n");
}

TEST(ZeltoMeshProperties, LogLevelShowsTheComponentsRecordsOnStderr) {
  const ProcessResult result = RunOneFrame({"--log-level", "debug", "--reduction", "1"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.out, "");
  const std::vector<std::string> lines = SplitLines(result.err);
  const std::string set_line =
      "[ZeltoMesh] Set ZeltoMeshAlgorithmConfigProperty by key=kZeltoMeshAlgorithmConfigKey prop=";
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                          [&](const std::string& line) { return line.rfind(set_line, 0) == 0; }),
            1)
      << result.err;
  EXPECT_NE(std::find(lines.begin(), lines.end(), "[ZeltoMesh] Using playback: 0"), lines.end())
      << result.err;
  for (const std::string& line : lines) EXPECT_EQ(line.rfind("[", 0), 0u) << line;
}

TEST(ZeltoMeshProperties, NoLogLevelNoLogLines) {
  const ProcessResult result = RunOneFrame({"--reduction", "1"});
  ASSERT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err, "");
}

TEST(ZeltoMeshInfo, SourceTypesAndEveryPropertyWithItsValue) {
  const ProcessResult result = RunZeltoMesh({"info"}, FreshDirectory("work"));
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.out,
            "component component_zelto_mesh\n"
            "source types mesh (0)\n"
            "properties of a \"mesh\" source after Open\n"
            "  channel_info_property "
            "{\"channels\":{\"0\":{\"raw_data_type\":\"kRawDataTypeMesh\",\"description\":\"Mesh Data\"}}}\n"
            "  frame_rate_property {\"num\":30,\"denom\":1}\n"
            "  kZeltoLogLevelKey {\"logLevel\":8}\n"
            "  kZeltoMeshAlgorithmConfigKey {\"meshReductionLevel\":0,\"resetTrianglePeriod\":4}\n"
            "  kZeltoMeshMaskSettingsKey {\"enabled\":false,\"maskInfo\":[],\"maskThreshold\":55}\n");
  EXPECT_EQ(result.err, "");
}

}  // namespace
}  // namespace ZeltoCliTest
