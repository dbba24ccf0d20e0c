// Every way a zelto-mesh run fails as its user sees it: the exit status, the
// one line on stderr, and nothing written.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>

#include "cli_test_helpers.h"
#include "zelto_sim/png_io.h"

namespace ZeltoCliTest {
namespace {

// `*` in `pattern` matches any text.
bool Matches(const std::string& text, const std::string& pattern) {
  std::string expression;
  for (const char c : pattern) {
    const bool special = std::strchr("\\^$.|?+()[]{}", c) != nullptr;
    expression += c == '*' ? "[\\s\\S]*" : special ? std::string("\\") + c : std::string(1, c);
  }
  return std::regex_match(text, std::regex(expression));
}

// `@` in arguments and texts stands for the fixture directory. A `*` in a
// text stands for the words of a library the program uses (argument parser,
// JSON parser, dynamic loader): only the program's own words are pinned.
TEST(ZeltoMesh, EveryFailureExitsWithOneLineAndWritesNothing) {
  const std::string fixtures = FreshDirectory("fixtures");
  for (const char* name : {"not_json", "eight_bit", "short_cloud"}) {
    std::filesystem::create_directories(fixtures + "/" + name + "/depth");
    std::filesystem::create_directories(fixtures + "/" + name + "/pointcloud");
    std::ofstream(fixtures + "/" + name + "/intrinsics.json")
        << R"({"width": 2, "height": 2, "fx": 2, "fy": 2, "cx": 1, "cy": 1})";
  }
  std::ofstream(fixtures + "/not_json/intrinsics.json") << R"({"width": 2,)";
  std::ofstream(fixtures + "/not_json/pointcloud/0.bin") << std::string(24, '\0');
  const uint8_t samples[4] = {1, 2, 3, 4};
  ASSERT_TRUE(ZeltoSim::WriteGrayPng(fixtures + "/eight_bit/depth/0.png", 2, 2, 8, samples).ok());
  std::ofstream(fixtures + "/short_cloud/pointcloud/0.bin") << std::string(23, '\0');
  std::filesystem::create_directories(fixtures + "/components");
  std::ofstream(fixtures + "/components/libcomponent_zelto_sim.so") << "not a library";

  struct Case {
    std::vector<std::string> arguments;
    const char* environment;
    int exit_code;
    std::string err;
  };
  const Case cases[] = {
      {{"run", "--format", "stl"}, "", 2, "error: --format: *\n"},
      {{"run", "--frames", "0"}, "", 2,
       "error: --frames: '0' is not a whole number from 1 to 2147483647\n"},
      {{"run", "--timeout", "-5"}, "", 2,
       "error: --timeout: '-5' is not a whole number from 1 to 2147483647\n"},
      {{"run", "--reduction", "x"}, "", 2, "error: *--reduction*\n"},
      {{"run", "--mask", ":depth"}, "", 2,
       "error: --mask: ':depth' has no mask name (NAME[:color|:depth][:invert])\n"},
      {{"run", "--mask", "person:color:depth"}, "", 2,
       "error: --mask: 'person:color:depth': unexpected 'depth' (NAME[:color|:depth][:invert])\n"},
      {{"run", "--frame-rate", "15/0"}, "", 2,
       "error: --frame-rate: '15/0' is not NUM[/DEN] with unsigned 32-bit numbers and DEN > 0\n"},
      {{"run", "--set", "kZeltoLogLevelKey"}, "", 2,
       "error: --set: 'kZeltoLogLevelKey' is not KEY=JSON\n"},
      {{"run", "--set", "k={"}, "", 2, "error: --set: 'k={': invalid JSON: *\n"},
      {{"run", "--set", "k=[1]"}, "", 2,
       "error: --set: 'k=[1]': the value must be a JSON object (a property is a map)\n"},
      {{"run", "--log-level", "loud"}, "", 2,
       "error: --log-level: 'loud' is not a log level (verbose, debug, info, warn, error, silent "
       "or 2..8)\n"},
      {{"run", "--mask-threshold", "256"}, "", 2, "error: --mask-threshold: *\n"},
      {{"run", "--bogus"}, "", 2, "error: *--bogus\n"},
      {{"mesh"}, "", 2, "error: unknown command 'mesh' (run or info)\n"},
      {{"run", "--input", "@/nothing"}, "", 2, "error: @/nothing: not a directory\n"},
      {{"run", "--input", "@/not_json"}, "", 2, "error: @/not_json/intrinsics.json: invalid JSON: *\n"},
      {{"run", "--input", "@/eight_bit"}, "", 2,
       "error: @/eight_bit/depth/0.png: 8-bit grayscale PNG, expected 16-bit grayscale\n"},
      {{"run", "--input", "@/short_cloud"}, "", 2,
       "error: @/short_cloud/pointcloud/0.bin: 23 bytes, expected 24 (2 x 2 x 6)\n"},
      {{"run", "--input", kRedwood, "--frames", "6"}, "", 2,
       "error: --frames 6: " + kRedwood + " has 5 frames\n"},
      {{"run", "--reduction=-1"}, "", 1,
       "error: set kZeltoMeshAlgorithmConfigKey: mesh reduction level must be equal or greater "
       "than zero. (cause 2, block ZeltoMesh)\n"},
      {{"run", "--set", "channel_info_property={}"}, "", 1,
       "error: set channel_info_property: not available to set channel_info_property (cause 10, "
       "block core)\n"},
      {{"run", "--set", "kNoSuchKey={}"}, "", 1,
       "error: set kNoSuchKey: property kNoSuchKey is not registered (cause 4, block core)\n"},
      {{"run", "--set", R"(kZeltoMeshAlgorithmConfigKey={"meshReductionLevel":true})"}, "", 1,
       "error: set kZeltoMeshAlgorithmConfigKey: what=*, buffer_size=21, offset=0, "
       "current=21(0x00) (cause 8, block core)\n"},
      {{"run", "--frames", "1", "--format", "none", "--get", "kNoSuchKey"}, "", 1,
       "error: get kNoSuchKey: property kNoSuchKey is not registered (cause 4, block core)\n"},
      // The host searches WEFTCORE_COMPONENT_PATH first: the mesh source's
      // Open fails on its first upstream stream.
      {{"run"}, "WEFTCORE_COMPONENT_PATH=@/components", 1,
       "error: open mesh: cannot load component library component_zelto_sim: "
       "@/components/libcomponent_zelto_sim.so: * (cause 9, block core)\n"},
      {{"run", "--frame-rate", "15", "--timeout", "300", "--format", "none"}, "", 3,
       "error: no frame from the mesh stream within 300 ms: --frame-rate 15 plays "
       "\"player_tof_stream\", which needs a recording (--input DIR)\n"},
      {{"run", "--input", kRedwood, "--no-player", "--frame-rate", "15", "--timeout", "300",
        "--format", "none"}, "", 3,
       "error: no frame from the mesh stream within 300 ms: --frame-rate 15 plays "
       "\"player_tof_stream\", which --no-player leaves out\n"},
  };
  const auto expand = [&fixtures](std::string text) {
    for (size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at + 1)) {
      text.replace(at, 1, fixtures);
    }
    return text;
  };
  for (const Case& row : cases) {
    std::vector<std::string> arguments;
    std::string trace = "zelto-mesh";
    for (const std::string& argument : row.arguments) {
      arguments.push_back(expand(argument));
      trace += " " + argument;
    }
    SCOPED_TRACE(trace);
    const std::string work = FreshDirectory("work");
    std::vector<std::string> environment;
    if (*row.environment != '\0') environment.push_back(expand(row.environment));
    const ProcessResult result = RunZeltoMesh(arguments, work, environment);
    EXPECT_EQ(result.exitCode, row.exit_code);
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(std::filesystem::is_empty(work)) << "written before the failure";
    EXPECT_TRUE(Matches(result.err, expand(row.err))) << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1);
  }
}

}  // namespace
}  // namespace ZeltoCliTest
