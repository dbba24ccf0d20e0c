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

// `@` in arguments and lines stands for the fixture directory, `*` in a line
// for the words of a library the program uses (argument parser, JSON parser,
// dynamic loader, MessagePack): only the program's own words are pinned.
TEST(ZeltoMesh, EveryFailureExitsWithOneLineAndWritesNothing) {
  const std::string fixtures = FreshDirectory("fixtures");
  for (const std::string name : {"/not_json", "/eight_bit", "/short_cloud", "/components"}) {
    std::filesystem::create_directories(fixtures + name + "/depth");
    std::ofstream(fixtures + name + "/intrinsics.json") << (name == "/not_json" ? "{" :
        R"({"width": 2, "height": 2, "fx": 2, "fy": 2, "cx": 1, "cy": 1})");
  }
  const uint8_t samples[4] = {1, 2, 3, 4};
  ASSERT_TRUE(ZeltoSim::WriteGrayPng(fixtures + "/eight_bit/depth/0.png", 2, 2, 8, samples).ok());
  std::filesystem::create_directories(fixtures + "/short_cloud/pointcloud");
  std::ofstream(fixtures + "/short_cloud/pointcloud/0.bin") << std::string(23, '\0');
  std::ofstream(fixtures + "/components/libcomponent_zelto_sim.so") << "not a library";
  struct Case {
    std::vector<std::string> arguments;
    int exit_code;
    std::string line;
  };
  const Case cases[] = {
      {{"run", "--format", "stl"}, 2, "error: --format: *"},
      {{"run", "--frames", "0"}, 2,
       "error: --frames: '0' is not a whole number from 1 to 2147483647"},
      {{"run", "--mask", ":depth"}, 2,
       "error: --mask: ':depth' has no mask name (NAME[:color|:depth][:invert])"},
      {{"run", "--mask", "a:color:depth"}, 2,
       "error: --mask: 'a:color:depth': unexpected 'depth' (NAME[:color|:depth][:invert])"},
      {{"run", "--frame-rate", "15/0"}, 2,
       "error: --frame-rate: '15/0' is not NUM[/DEN] with unsigned 32-bit numbers and DEN > 0"},
      {{"run", "--set", "k"}, 2, "error: --set: 'k' is not KEY=JSON"},
      {{"run", "--set", "k={"}, 2, "error: --set: 'k={': invalid JSON: *"},
      {{"run", "--set", "k=[1]"}, 2,
       "error: --set: 'k=[1]': the value must be a JSON object (a property is a map)"},
      {{"run", "--log-level", "loud"}, 2, "error: --log-level: 'loud' is not a log level "
                                          "(verbose, debug, info, warn, error, silent or 2..8)"},
      {{"mesh"}, 2, "error: unknown command 'mesh' (run or info)"},
      {{"run", "--input", "@/none"}, 2, "error: @/none: not a directory"},
      {{"run", "--input", "@/not_json"}, 2, "error: @/not_json/intrinsics.json: invalid JSON: *"},
      {{"run", "--input", "@/eight_bit"}, 2,
       "error: @/eight_bit/depth/0.png: 8-bit grayscale PNG, expected 16-bit grayscale"},
      {{"run", "--input", "@/short_cloud"}, 2,
       "error: @/short_cloud/pointcloud/0.bin: 23 bytes, expected 24 (2 x 2 x 6)"},
      {{"run", "--input", kRedwood, "--frames", "6"}, 2,
       "error: --frames 6: " + kRedwood + " has 5 frames"},
      {{"run", "--reduction=-1"}, 1, "error: set kZeltoMeshAlgorithmConfigKey: mesh reduction "
       "level must be equal or greater than zero. (cause 2, block ZeltoMesh)"},
      {{"run", "--set", "channel_info_property={}"}, 1, "error: set channel_info_property: not "
       "available to set channel_info_property (cause 10, block core)"},
      {{"run", "--set", "kNo={}"}, 1,
       "error: set kNo: property kNo is not registered (cause 4, block core)"},
      {{"run", "--set", R"(kZeltoMeshAlgorithmConfigKey={"meshReductionLevel":true})"}, 1,
       "error: set kZeltoMeshAlgorithmConfigKey: what=*, buffer_size=21, offset=0, "
       "current=21(0x00) (cause 8, block core)"},
      {{"run", "--frames", "1", "--format", "none", "--get", "kNo"}, 1,
       "error: get kNo: property kNo is not registered (cause 4, block core)"},
      // The host looks in WEFTCORE_COMPONENT_PATH first; the mesh source's
      // Open fails on its first upstream stream.
      {{"run", "WEFTCORE_COMPONENT_PATH=@/components"}, 1, "error: open mesh: cannot load "
       "component library component_zelto_sim: @/components/libcomponent_zelto_sim.so: * (cause 9, "
       "block core)"},
      {{"run", "--frame-rate", "15", "--timeout", "300", "--format", "none"}, 3,
       "error: no frame from the mesh stream within 300 ms: --frame-rate 15 plays "
       "\"player_tof_stream\", which needs a recording (--input DIR)"},
      {{"run", "--input", kRedwood, "--no-player", "--frame-rate", "15", "--timeout", "300",
        "--format", "none"}, 3, "error: no frame from the mesh stream within 300 ms: "
       "--frame-rate 15 plays \"player_tof_stream\", which --no-player leaves out"},
  };
  const auto expand = [&fixtures](std::string text) {
    for (size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at)) {
      text.replace(at, 1, fixtures);
    }
    return text;
  };
  for (const Case& row : cases) {
    std::vector<std::string> arguments, environment;
    for (const std::string& argument : row.arguments) {
      const bool variable = argument.find("=@") != std::string::npos;
      (variable ? environment : arguments).push_back(expand(argument));
    }
    SCOPED_TRACE(row.line);
    const std::string work = FreshDirectory("work");
    const ProcessResult result = RunZeltoMesh(arguments, work, environment);
    EXPECT_EQ(result.exitCode, row.exit_code);
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(std::filesystem::is_empty(work)) << "written before the failure";
    std::string pattern;
    for (const char c : expand(row.line) + "\n") {
      const bool special = std::strchr("\\^$.|?+()[]{}", c) != nullptr;
      pattern += c == '*' ? "[^\n]*" : special ? std::string("\\") + c : std::string(1, c);
    }
    EXPECT_TRUE(std::regex_match(result.err, std::regex(pattern))) << result.err;
  }
}

}  // namespace
}  // namespace ZeltoCliTest
