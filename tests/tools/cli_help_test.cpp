// --help of each command lists every option with its real default.
#include <gtest/gtest.h>

#include "cli_test_helpers.h"

namespace ZeltoCliTest {
namespace {

TEST(ZeltoMeshHelp, TopLevelNamesBothCommands) {
  const ProcessResult result = RunZeltoMesh({"--help"}, FreshDirectory("work"));
  ASSERT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_NE(result.out.find("Usage: zelto-mesh [OPTIONS] SUBCOMMAND"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("  run "), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("  info "), std::string::npos) << result.out;
}

TEST(ZeltoMeshHelp, RunListsEveryOption) {
  const ProcessResult result = RunZeltoMesh({"run", "--help"}, FreshDirectory("work"));
  ASSERT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err, "");
  for (const char* option :
       {"--input DIR", "--frames N", "--out DIR", "--format FORMAT", "--keep-invalid",
        "--reduction L", "--reset-period P", "--frame-rate NUM[/DEN]", "--remote", "--no-player",
        "--mask NAME[:color|:depth][:invert]", "--mask-threshold T", "--set KEY=JSON", "--get KEY",
        "--hex", "--preview FILE.png", "--stats FILE.jsonl", "-q,--quiet", "--log-level LEVEL",
        "--timeout MS"}) {
    EXPECT_NE(result.out.find("  " + std::string(option) + " "), std::string::npos)
        << option << "\n" << result.out;
  }
  // The defaults the help states are the ones the program uses.
  EXPECT_NE(result.out.find("Directory for the per-frame files (default: out)"), std::string::npos);
  EXPECT_NE(result.out.find("none: no files (default: ply)"), std::string::npos);
  EXPECT_NE(result.out.find("within this many milliseconds (default: 5000)"), std::string::npos);
  EXPECT_NE(result.out.find("default: the source's (55)"), std::string::npos);
}

TEST(ZeltoMeshHelp, InfoHasItsOwnHelp) {
  const ProcessResult result = RunZeltoMesh({"info", "--help"}, FreshDirectory("work"));
  ASSERT_EQ(result.exitCode, 0);
  EXPECT_NE(result.out.find("Usage: zelto-mesh info"), std::string::npos) << result.out;
}

}  // namespace
}  // namespace ZeltoCliTest
