// zelto-mesh as a user runs it: the built program with the built plug-ins,
// on the synthetic scene and on the recording examples/redwood.
#include <cstdio>
#include <filesystem>
#include <regex>

#include "cli_test_helpers.h"
#include "support/redwood_checksums.h"
#include "support/redwood_frame.h"
#include "zelto_sim/png_io.h"
#include "zelto_sim/recording.h"

namespace ZeltoCliTest {
namespace {

using Args = std::vector<std::string>;
constexpr float kInvalidDepth = 32001.0f / 1000.0f;
const Args kRedwoodFrame = {"run", "--input", kRedwood, "--frames", "1", "-q"};

Args With(Args run, const Args& more) {
  run.insert(run.end(), more.begin(), more.end());
  return run;
}

// The command of `make run` on 8 frames, two of them re-fits of the triangle
// split: 60 meshes would cost half a gigabyte.
TEST(ZeltoMesh, MakeRunCommandWritesMaskedMeshesPreviewStatsAndSummary) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result = RunZeltoMesh({"run", "--frames", "8", "--mask", "person", "--out",
      "out", "--preview", "out/preview.png", "--stats", "out/stats.jsonl"}, work);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err, "");  // stderr is no terminal: no progress bar
  EXPECT_EQ(std::regex_replace(result.out, std::regex("time +[0-9]+\\.[0-9] ms"), "time T ms"),
            "8 frames from the synthetic scene, reference layout\n"
            "  vertices per frame   307200\n  triangles per frame  612162\n"
            "  median time T ms per frame\n"
            "  meshes               out/frame_000000.ply ... out/frame_000007.ply\n"
            "  preview              out/preview.png\n  statistics           out/stats.jsonl\n");
  std::string stats;  // a fresh source re-fits every 4th frame; 30 frames per second
  for (uint64_t i = 0; i < 8; ++i) {
    stats += "{\"frame\":" + std::to_string(i) + ",\"sequenceNumber\":" + std::to_string(i) +
             ",\"capturedTimestamp\":" + std::to_string(i * ZeltoSim::kFramePeriodNs) +
             ",\"vertexCount\":307200,\"triangleCount\":612162,\"resetTriangle\":" +
             (i % 4 == 3 ? "true" : "false") + ",\"layout\":\"reference\",\"bytes\":28," +
             "\"buildMs\":T}\n";
    const PlyMesh mesh = ReadPly(work + "/out/frame_00000" + std::to_string(i) + ".ply");
    EXPECT_GT(mesh.triangles.size(), 0u);
    for (size_t z = 2; z < mesh.vertices.size(); z += 3) ASSERT_NE(mesh.vertices[z], kInvalidDepth);
  }
  EXPECT_EQ(std::regex_replace(ReadFileBytes(work + "/out/stats.jsonl"),
                               std::regex("\"buildMs\":[0-9.]*[1-9][0-9.]*\\}"), "\"buildMs\":T}"),
            stats);
  EXPECT_FALSE(std::filesystem::exists(work + "/out/frame_000008.ply"));
  ZeltoSim::PngInfo png;
  ASSERT_TRUE(ZeltoSim::ReadPngInfo(work + "/out/preview.png", &png).ok());
  EXPECT_EQ(std::vector<uint32_t>({png.width, png.height, uint32_t(png.colorType)}),
            std::vector<uint32_t>({640, 480, 2}));  // RGB
  std::filesystem::remove_all(work);
}

TEST(ZeltoMesh, RawRedwoodFrameMatchesThePinnedChecksums) {
  for (const auto& [period, checksum] :
       {std::pair("1", ZeltoTest::kRedwoodFrame0FlatResetFnv1a64),
        std::pair("1000", ZeltoTest::kRedwoodFrame0FlatNonResetFnv1a64)}) {
    SCOPED_TRACE(std::string("reset period ") + period);
    const std::string work = FreshDirectory("work");
    const Args raw = {"--frame-rate", "30", "--format", "raw", "--reset-period"};
    ASSERT_EQ(RunZeltoMesh(With(With(kRedwoodFrame, raw), {period}), work).exitCode, 0);
    const std::string bytes = ReadFileBytes(work + "/out/frame_000000.bin");
    ASSERT_EQ(bytes.size(), ZeltoTest::kRedwoodFrame0FlatSize);
    EXPECT_EQ(ZeltoTest::Fnv1a64(bytes.data(), bytes.size()), checksum);
  }
}

// Pixels closer than 10 mm are the invalid vertices of the mesh; OBJ shows
// the PLY's mesh in the shortest text that reads back as the same floats.
TEST(ZeltoMesh, PlyAndObjDropExactlyTheInvalidVerticesUnlessAskedToKeepThem) {
  const std::string work = FreshDirectory("work");
  for (const Args& options : {Args{"--out", "all", "--keep-invalid"}, Args{"--out", "valid"},
                              Args{"--out", "obj", "--format", "obj"}}) {
    ASSERT_EQ(RunZeltoMesh(With(kRedwoodFrame, options), work).exitCode, 0);
  }
  const PlyMesh all = ReadPly(work + "/all/frame_000000.ply");
  const PlyMesh valid = ReadPly(work + "/valid/frame_000000.ply");
  ASSERT_EQ(all.vertices.size(), 3u * 640 * 480);
  EXPECT_EQ(all.triangles.size(), 3u * 612162);
  const ZeltoTest::PointCloudImage image = ZeltoTest::LoadRedwoodFrame(0);
  std::vector<bool> in(640 * 480);
  std::vector<float> kept;
  for (size_t p = 0; p < in.size(); ++p) {
    in[p] = image.points[3 * p + 2] >= 10;
    if (in[p]) kept.insert(kept.end(), &all.vertices[3 * p], &all.vertices[3 * p + 3]);
    ASSERT_TRUE(in[p] || all.vertices[3 * p + 2] == kInvalidDepth) << p;
  }
  EXPECT_LT(kept.size(), all.vertices.size());  // the frame has holes to leave out
  EXPECT_EQ(valid.vertices, kept);
  size_t triangles = 0;  // (b, b+1, b+w) and (b+1, b+w+1, b+w) of a cell, no re-fit
  for (size_t b = 0; b + 641 < in.size(); b += b % 640 == 638 ? 2 : 1) {
    triangles += (in[b] && in[b + 1] && in[b + 640]) + (in[b + 1] && in[b + 641] && in[b + 640]);
  }
  EXPECT_EQ(valid.triangles.size(), 3 * triangles);
  const std::vector<std::string> lines = SplitLines(ReadFileBytes(work + "/obj/frame_000000.obj"));
  EXPECT_EQ(lines.at(0), "# zelto-mesh, metres, camera coordinates");
  PlyMesh obj;
  for (size_t i = 1; i < lines.size(); ++i) {
    float v[3];
    int f[3];
    if (std::sscanf(lines[i].c_str(), "v %f %f %f", &v[0], &v[1], &v[2]) == 3) {
      obj.vertices.insert(obj.vertices.end(), v, v + 3);
    } else {
      ASSERT_EQ(std::sscanf(lines[i].c_str(), "f %d %d %d", &f[0], &f[1], &f[2]), 3) << lines[i];
      obj.triangles.insert(obj.triangles.end(), {f[0] - 1, f[1] - 1, f[2] - 1});
    }
  }
  EXPECT_TRUE(obj.vertices == valid.vertices && obj.triangles == valid.triangles);
}

TEST(ZeltoMesh, PlaybackDeliversEveryRecordedFrameWithItsTimestamp) {
  ZeltoSim::Recording recording;
  ASSERT_TRUE(ZeltoSim::LoadRecording(kRedwood, &recording).ok());
  const std::string work = FreshDirectory("work");
  const ProcessResult result = RunZeltoMesh(
      {"run", "--input", kRedwood, "--frame-rate", "15", "--format", "none", "--stats", "s"}, work);
  EXPECT_EQ(SplitLines(result.out).at(0), "5 frames from " + kRedwood + ", reference layout");
  const std::vector<std::string> stats = SplitLines(ReadFileBytes(work + "/s"));
  ASSERT_EQ(stats.size(), recording.timestamps.size());
  for (size_t i = 0; i < stats.size(); ++i) {
    const std::string timestamp = std::to_string(recording.timestamps[i]);
    EXPECT_NE(stats[i].find(",\"capturedTimestamp\":" + timestamp + ","), std::string::npos);
  }
}

TEST(ZeltoMesh, PropertiesAreSetBeforeTheStartAndReadAfterTheRun) {
  const std::pair<Args, std::string> cases[] = {
      {{"--reduction", "2", "--frame-rate", "60/1", "--get", "kZeltoMeshAlgorithmConfigKey",
        "--get", "frame_rate_property", "--hex"},  // the source keeps its own frame rate
       "kZeltoMeshAlgorithmConfigKey {\"meshReductionLevel\":2,\"resetTrianglePeriod\":4}\n"
       "82b26d657368526564756374696f6e4c6576656c02b37265736574547269616e676c65506572696f6404\n"
       "frame_rate_property {\"num\":30,\"denom\":1}\n82a36e756d1ea564656e6f6d01\n"},
      {{"--set", R"(kZeltoMeshAlgorithmConfigKey={"meshReductionLevel":5})", "--reset-period",
        "9", "--get", "kZeltoMeshAlgorithmConfigKey"},  // --set comes last; its period 0 keeps 9
       "kZeltoMeshAlgorithmConfigKey {\"meshReductionLevel\":5,\"resetTrianglePeriod\":9}\n"},
      {{"--mask", "person", "--mask", "floor:depth:invert", "--mask-threshold", "200", "--get",
        "kZeltoMeshMaskSettingsKey"},
       "kZeltoMeshMaskSettingsKey {\"enabled\":true,\"maskInfo\":[{\"name\":\"person\","
       "\"isColorSource\":true,\"isInvertMask\":false},{\"name\":\"floor\",\"isColorSource\":"
       "false,\"isInvertMask\":true}],\"maskThreshold\":200}\n"},
      {{"--set", R"(kZeltoMeshMaskSettingsKey={"maskThreshold":7})", "--set",
        R"(kZeltoLogLevelKey={"logLevel":6})", "--get", "kZeltoLogLevelKey", "--get",
        "kZeltoMeshMaskSettingsKey", "--hex"},
       "kZeltoLogLevelKey {\"logLevel\":6}\n81a86c6f674c6576656c06\n"
       "kZeltoMeshMaskSettingsKey {\"enabled\":false,\"maskInfo\":[],\"maskThreshold\":7}\n"
       "83a7656e61626c6564c2a86d61736b496e666f90ad6d61736b5468726573686f6c6407\n"},
      {{"--log-level", "debug"}, ""},
  };
  for (const auto& [arguments, out] : cases) {
    SCOPED_TRACE(arguments[0] + " " + arguments[1]);
    const Args run = {"run", "--frames", "1", "--format", "none", "-q"};
    const ProcessResult result = RunZeltoMesh(With(run, arguments), FreshDirectory("work"));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, out);
    // The component's log records reach stderr only when asked for.
    const bool logging = arguments[0] == "--log-level";
    EXPECT_EQ(result.err.find("[ZeltoMesh] Using playback: 0\n") != std::string::npos, logging);
    EXPECT_TRUE(logging || result.err.empty()) << result.err;
  }
}

TEST(ZeltoMesh, InfoListsTheSourceTypesAndEveryPropertyWithItsValue) {
  const ProcessResult result = RunZeltoMesh({"info"}, FreshDirectory("work"));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.out + result.err,
            "component component_zelto_mesh\nsource types mesh (0)\n"
            "properties of a \"mesh\" source after Open\n  channel_info_property {\"channels\":"
            "{\"0\":{\"raw_data_type\":\"kRawDataTypeMesh\",\"description\":\"Mesh Data\"}}}\n"
            "  frame_rate_property {\"num\":30,\"denom\":1}\n  kZeltoLogLevelKey {\"logLevel\":8}\n"
            "  kZeltoMeshAlgorithmConfigKey {\"meshReductionLevel\":0,\"resetTrianglePeriod\":4}\n"
            "  kZeltoMeshMaskSettingsKey {\"enabled\":false,\"maskInfo\":[],"
            "\"maskThreshold\":55}\n");
}

TEST(ZeltoMesh, HelpListsEveryOptionWithTheDefaultInUse) {
  const ProcessResult result = RunZeltoMesh({"run", "--help"}, FreshDirectory("work"));
  EXPECT_EQ(result.exitCode, 0);
  for (const char* text :
       {"--input DIR ", "--frames N ", "--out DIR ", "--format FORMAT ", "--keep-invalid ",
        "--reduction L ", "--reset-period P ", "--frame-rate NUM[/DEN] ", "--remote ",
        "--no-player ", "--mask NAME[:color|:depth][:invert] ", "--mask-threshold T ",
        "--set KEY=JSON ", "--get KEY ", "--hex ", "--preview FILE.png ", "--stats FILE.jsonl ",
        "-q,--quiet ", "--log-level LEVEL ", "--timeout MS ", "60 for the synthetic scene",
        "per-frame files (default: out)", "no files (default: ply)", "the source's (55)",
        "this many milliseconds (default: 5000)"}) {
    EXPECT_NE(result.out.find(text), std::string::npos) << text;
  }
}

// On a terminal the bar counts the frames and is erased before the summary.
TEST(ZeltoMesh, ProgressBarOnlyOnATerminalAndNotWhenQuiet) {
  const Args run = {"run", "--frames", "3", "--format", "none"};
  const ProcessResult shown = RunZeltoMesh(run, FreshDirectory("shown"), {}, true);
  EXPECT_NE(shown.err.find("\r[##########--------------------]  1/3 frames  "), std::string::npos);
  EXPECT_NE(shown.err.find("\r[##############################]  3/3 frames  "), std::string::npos);
  EXPECT_EQ(shown.err.substr(shown.err.size() - 5), "\r\x1b[2K") << shown.err;
  EXPECT_EQ(SplitLines(shown.out).at(0), "3 frames from the synthetic scene, reference layout");
  const ProcessResult quiet = RunZeltoMesh(With(run, {"-q"}), FreshDirectory("quiet"), {}, true);
  EXPECT_EQ(quiet.exitCode + shown.exitCode, 0);
  EXPECT_EQ(quiet.err + quiet.out, "");
}

}  // namespace
}  // namespace ZeltoCliTest
