// Every way a run fails: the exit status, the one line on stderr, and no
// output written.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "cli_test_helpers.h"
#include "zelto_sim/png_io.h"

namespace ZeltoCliTest {
namespace {

struct Failure {
  int exitCode;
  std::string err;
};

// Runs in a fresh directory and checks that nothing was written there.
Failure RunFailing(const std::vector<std::string>& arguments) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result = RunZeltoMesh(arguments, work);
  EXPECT_EQ(result.out, "");
  EXPECT_FALSE(Exists(work + "/out")) << "output written before the failure";
  return {result.exitCode, result.err};
}

// --- the component refuses a property (exit 1) ---

TEST(ZeltoMeshErrors, NegativeReductionLevel) {
  const Failure failure = RunFailing({"run", "--reduction=-1"});
  EXPECT_EQ(failure.exitCode, 1);
  EXPECT_EQ(failure.err,
            "error: set kZeltoMeshAlgorithmConfigKey: mesh reduction level must be equal or "
            "greater than zero. (cause 2, block ZeltoMesh)\n");
}

TEST(ZeltoMeshErrors, NegativeResetPeriod) {
  const Failure failure = RunFailing({"run", "--reset-period", "-2"});
  EXPECT_EQ(failure.exitCode, 1);
  EXPECT_EQ(failure.err,
            "error: set kZeltoMeshAlgorithmConfigKey: resetTrianglePeriod must be equal or "
            "greater than zero. (cause 2, block ZeltoMesh)\n");
}

TEST(ZeltoMeshErrors, LogLevelOutOfRange) {
  const Failure failure = RunFailing({"run", "--set", R"(kZeltoLogLevelKey={"logLevel":9})"});
  EXPECT_EQ(failure.exitCode, 1);
  EXPECT_EQ(failure.err,
            "error: set kZeltoLogLevelKey: property log level 9 is out of range. (cause 2, block "
            "ZeltoMesh)\n");
}

TEST(ZeltoMeshErrors, ChannelInfoIsNotSettable) {
  const Failure failure = RunFailing({"run", "--set", "channel_info_property={}"});
  EXPECT_EQ(failure.exitCode, 1);
  EXPECT_EQ(failure.err,
            "error: set channel_info_property: not available to set channel_info_property (cause "
            "10, block core)\n");
}

TEST(ZeltoMeshErrors, UnknownPropertyKey) {
  const Failure failure = RunFailing({"run", "--set", "kNoSuchKey={}"});
  EXPECT_EQ(failure.exitCode, 1);
  EXPECT_EQ(failure.err, "error: set kNoSuchKey: property kNoSuchKey is not registered (cause 4, block core)\n");
}

TEST(ZeltoMeshErrors, WrongTypeInARecordIsASerializerFailure) {
  const Failure failure =
      RunFailing({"run", "--set", R"(kZeltoMeshAlgorithmConfigKey={"meshReductionLevel":true})"});
  EXPECT_EQ(failure.exitCode, 1);
  const std::string start = "error: set kZeltoMeshAlgorithmConfigKey: what=";
  const std::string end = ", buffer_size=21, offset=0, current=21(0x00) (cause 8, block core)\n";
  EXPECT_EQ(failure.err.substr(0, start.size()), start) << failure.err;
  ASSERT_GT(failure.err.size(), end.size());
  EXPECT_EQ(failure.err.substr(failure.err.size() - end.size()), end) << failure.err;
}

TEST(ZeltoMeshErrors, GetOfAnUnknownKeyAfterTheRun) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result =
      RunZeltoMesh({"run", "--frames", "1", "--format", "none", "--get", "kNoSuchKey"}, work);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "error: get kNoSuchKey: property kNoSuchKey is not registered (cause 4, block core)\n");
}

// --- the host cannot open the stream (exit 1) ---

TEST(ZeltoMeshErrors, OpenFailsWhenTheSimulatorDoesNotLoad) {
  // WEFTCORE_COMPONENT_PATH comes first in the host's search: a file there
  // that is no library makes the mesh source's Open fail on its first
  // upstream stream.
  const std::string components = FreshDirectory("components");
  std::ofstream(components + "/libcomponent_zelto_sim.so") << "not a library";
  const std::string work = FreshDirectory("work");
  const ProcessResult result =
      RunZeltoMesh({"run"}, work, {"WEFTCORE_COMPONENT_PATH=" + components});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "error: open mesh: cannot load component library component_zelto_sim: " +
                            components +
                            "/libcomponent_zelto_sim.so: file too short (cause 9, block core)\n");
  EXPECT_FALSE(Exists(work + "/out"));
}

// --- no frames (exit 3) ---

TEST(ZeltoMeshErrors, PlaybackWithoutARecordingTimesOut) {
  const Failure failure =
      RunFailing({"run", "--frame-rate", "15", "--timeout", "300", "--format", "none"});
  EXPECT_EQ(failure.exitCode, 3);
  EXPECT_EQ(failure.err,
            "error: no frame from the mesh stream within 300 ms: --frame-rate 15 plays "
            "\"player_tof_stream\", which needs a recording (--input DIR)\n");
}

TEST(ZeltoMeshErrors, PlaybackWithThePlayerLeftOutTimesOut) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result = RunZeltoMesh({"run", "--input", RedwoodDirectory(), "--no-player",
                                             "--frame-rate", "15", "--timeout", "300",
                                             "--format", "none"},
                                            work);
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err,
            "error: no frame from the mesh stream within 300 ms: --frame-rate 15 plays "
            "\"player_tof_stream\", which --no-player leaves out\n");
}

// --- bad arguments (exit 2) ---

TEST(ZeltoMeshErrors, BadArguments) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"run", "--format", "stl"}, "error: --format: stl not in {ply,obj,raw,none}\n"},
      {{"run", "--frames", "0"}, "error: --frames: '0' is not a whole number from 1 to 2147483647\n"},
      {{"run", "--frames", "many"},
       "error: --frames: 'many' is not a whole number from 1 to 2147483647\n"},
      {{"run", "--timeout", "-5"},
       "error: --timeout: '-5' is not a whole number from 1 to 2147483647\n"},
      {{"run", "--reduction", "x"}, "error: Could not convert: --reduction = x\n"},
      {{"run", "--mask", ":depth"},
       "error: --mask: ':depth' has no mask name (NAME[:color|:depth][:invert])\n"},
      {{"run", "--frame-rate", "15/0"},
       "error: --frame-rate: '15/0' is not NUM[/DEN] with unsigned 32-bit numbers and DEN > 0\n"},
      {{"run", "--set", "kZeltoLogLevelKey"}, "error: --set: 'kZeltoLogLevelKey' is not KEY=JSON\n"},
      {{"run", "--set", "k={"},
       "error: --set: 'k={': invalid JSON: parse error at line 1, column 2: syntax error while "
       "parsing object key - unexpected end of input; expected string literal\n"},
      {{"run", "--log-level", "loud"},
       "error: --log-level: 'loud' is not a log level (verbose, debug, info, warn, error, silent "
       "or 2..8)\n"},
      {{"run", "--mask-threshold", "256"},
       "error: --mask-threshold: Value 256 not in range 0 to 255\n"},
      {{"run", "--bogus"}, "error: The following argument was not expected: --bogus\n"},
      {{"mesh"}, "error: unknown command 'mesh' (run or info)\n"},
  };
  for (const auto& [arguments, message] : cases) {
    const Failure failure = RunFailing(arguments);
    EXPECT_EQ(failure.exitCode, 2) << arguments.back();
    EXPECT_EQ(failure.err, message);
  }
}

TEST(ZeltoMeshErrors, NoCommandPrintsTheHelpAndFails) {
  const Failure failure = RunFailing({});
  EXPECT_EQ(failure.exitCode, 2);
  EXPECT_NE(failure.err.find("Usage: zelto-mesh"), std::string::npos) << failure.err;
  const std::string last = "error: A subcommand is required\n";
  EXPECT_EQ(failure.err.substr(failure.err.size() - last.size()), last);
}

// --- a missing or malformed recording (exit 2) ---

// A fresh recording directory with examples/redwood's intrinsics and an
// empty depth/ for the test to fill.
std::string MakeRecording(const std::string& name) {
  const std::string directory = FreshDirectory(name);
  std::filesystem::copy_file(RedwoodDirectory() + "/intrinsics.json", directory + "/intrinsics.json");
  std::filesystem::create_directories(directory + "/depth");
  return directory;
}

TEST(ZeltoMeshErrors, MissingRecording) {
  const std::string missing = FreshDirectory("none") + "/nothing";
  const Failure failure = RunFailing({"run", "--input", missing});
  EXPECT_EQ(failure.exitCode, 2);
  EXPECT_EQ(failure.err, "error: " + missing + ": not a directory\n");
}

TEST(ZeltoMeshErrors, IntrinsicsThatAreNotJson) {
  const std::string recording = MakeRecording("recording");
  std::filesystem::copy_file(RedwoodDirectory() + "/depth/00000.png", recording + "/depth/00000.png");
  std::ofstream(recording + "/intrinsics.json", std::ios::trunc) << "{\"width\": 640,";
  const Failure failure = RunFailing({"run", "--input", recording});
  EXPECT_EQ(failure.exitCode, 2);
  EXPECT_EQ(failure.err, "error: " + recording +
                             "/intrinsics.json: invalid JSON: [json.exception.parse_error.101] "
                             "parse error at line 1, column 15: syntax error while parsing object "
                             "key - unexpected end of input; expected string literal\n");
}

TEST(ZeltoMeshErrors, DepthPngThatIsNot16BitGrayscale) {
  const std::string recording = MakeRecording("recording");
  std::vector<uint8_t> samples(640 * 480, 7);
  ASSERT_TRUE(ZeltoSim::WriteGrayPng(recording + "/depth/00000.png", 640, 480, 8, samples.data()).ok());
  const Failure failure = RunFailing({"run", "--input", recording});
  EXPECT_EQ(failure.exitCode, 2);
  EXPECT_EQ(failure.err, "error: " + recording +
                             "/depth/00000.png: 8-bit grayscale PNG, expected 16-bit grayscale\n");
}

TEST(ZeltoMeshErrors, PointCloudFileOfTheWrongSize) {
  const std::string recording = FreshDirectory("recording");
  std::filesystem::copy_file(RedwoodDirectory() + "/intrinsics.json", recording + "/intrinsics.json");
  std::filesystem::create_directories(recording + "/pointcloud");
  std::ofstream(recording + "/pointcloud/00000.bin", std::ios::binary)
      << std::string(640 * 480 * 6 - 1, '\0');
  const Failure failure = RunFailing({"run", "--input", recording});
  EXPECT_EQ(failure.exitCode, 2);
  EXPECT_EQ(failure.err, "error: " + recording +
                             "/pointcloud/00000.bin: 1843199 bytes, expected 1843200 (640 x 480 x 6)\n");
}

TEST(ZeltoMeshErrors, MoreFramesThanTheRecordingHas) {
  const Failure failure = RunFailing({"run", "--input", RedwoodDirectory(), "--frames", "6"});
  EXPECT_EQ(failure.exitCode, 2);
  EXPECT_EQ(failure.err, "error: --frames 6: " + RedwoodDirectory() + " has 5 frames\n");
}

}  // namespace
}  // namespace ZeltoCliTest
