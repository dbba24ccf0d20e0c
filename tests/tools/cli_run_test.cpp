// `make run`'s command and the default run on the synthetic scene.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "cli_test_helpers.h"
#include "strict_ply_reader.h"
#include "zelto_sim/png_io.h"
#include "zelto_sim/recording.h"

namespace ZeltoCliTest {
namespace {

constexpr float kInvalidDepth = 32001.0f / 1000.0f;

// The Makefile's `run` target, as it is written there.
TEST(ZeltoMeshRun, MakeRunCommandWritesMeshesPreviewStatsAndSummary) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result = RunZeltoMesh(
      {"run", "--mask", "person", "--out", "out", "--preview", "out/preview.png", "--stats",
       "out/stats.jsonl"},
      work);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  // stderr is a file here, so no progress bar; nothing else goes there.
  EXPECT_EQ(result.err, "");

  const std::vector<std::string> summary = SplitLines(result.out);
  ASSERT_EQ(summary.size(), 7u) << result.out;
  EXPECT_EQ(summary[0], "60 frames from the synthetic scene, reference layout");
  EXPECT_EQ(summary[1], "  vertices per frame   307200");
  EXPECT_EQ(summary[2], "  triangles per frame  612162");
  EXPECT_EQ(summary[3].rfind("  median time          ", 0), 0u) << summary[3];
  EXPECT_EQ(summary[3].substr(summary[3].size() - 13), " ms per frame");
  EXPECT_EQ(summary[4], "  meshes               out/frame_000000.ply ... out/frame_000059.ply");
  EXPECT_EQ(summary[5], "  preview              out/preview.png");
  EXPECT_EQ(summary[6], "  statistics           out/stats.jsonl");

  // 60 strict PLY files; the person mask and the invalid depths are gone.
  for (int frame = 0; frame < 60; ++frame) {
    char name[32];
    std::snprintf(name, sizeof name, "/out/frame_%06d.ply", frame);
    PlyMesh mesh;
    std::string error;
    ASSERT_TRUE(ReadStrictPly(ReadFileBytes(work + name), &mesh, &error)) << name << ": " << error;
    EXPECT_GT(mesh.triangles.size(), 0u) << name;
    EXPECT_LT(mesh.vertices.size(), 3u * 307200u) << name;
    for (size_t v = 2; v < mesh.vertices.size(); v += 3) {
      ASSERT_NE(mesh.vertices[v], kInvalidDepth) << name << " vertex " << v / 3;
    }
  }
  EXPECT_FALSE(Exists(work + "/out/frame_000060.ply"));

  // One statistics line per frame. A fresh source re-fits on every 4th
  // frame (period 4, counter from 1); the scene is captured 30 per second.
  const std::vector<std::string> stats = SplitLines(ReadFileBytes(work + "/out/stats.jsonl"));
  ASSERT_EQ(stats.size(), 60u);
  for (size_t i = 0; i < stats.size(); ++i) {
    const auto line = nlohmann::ordered_json::parse(stats[i]);
    std::vector<std::string> keys;
    for (const auto& item : line.items()) keys.push_back(item.key());
    EXPECT_EQ(keys, (std::vector<std::string>{"frame", "sequenceNumber", "capturedTimestamp",
                                              "vertexCount", "triangleCount", "resetTriangle",
                                              "layout", "bytes", "buildMs"}));
    EXPECT_EQ(line["frame"], i);
    EXPECT_EQ(line["sequenceNumber"], i);
    EXPECT_EQ(line["capturedTimestamp"], i * ZeltoSim::kFramePeriodNs);
    EXPECT_EQ(line["vertexCount"], 307200);
    EXPECT_EQ(line["triangleCount"], 612162);
    EXPECT_EQ(line["resetTriangle"], (i + 1) % 4 == 0) << i;
    EXPECT_EQ(line["layout"], "reference");
    EXPECT_EQ(line["bytes"], 28);
    EXPECT_GT(line["buildMs"].get<double>(), 0.0);
  }

  ZeltoSim::PngInfo preview;
  ASSERT_TRUE(ZeltoSim::ReadPngInfo(work + "/out/preview.png", &preview).ok());
  EXPECT_EQ(preview.width, 640u);
  EXPECT_EQ(preview.height, 480u);
  EXPECT_EQ(preview.bitDepth, 8);
  EXPECT_EQ(preview.colorType, 2);  // RGB
  std::filesystem::remove_all(work);  // some 500 MB of meshes
}

TEST(ZeltoMeshRun, QuietPrintsNothingAndTheDefaultOutputIsOutSlash) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result = RunZeltoMesh({"run", "--frames", "2", "--quiet"}, work);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(Exists(work + "/out/frame_000000.ply"));
  EXPECT_TRUE(Exists(work + "/out/frame_000001.ply"));
  EXPECT_FALSE(Exists(work + "/out/frame_000002.ply"));
}

TEST(ZeltoMeshRun, RemoteRuntimeSettingsGiveTheFlatLayout) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result =
      RunZeltoMesh({"run", "--remote", "--frames", "1", "--format", "raw", "--stats", "s.jsonl",
                    "--reduction", "3", "--quiet"},
                   work);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  // 640 x 480 at step 4: 160 x 120 vertices, 2 x 159 x 119 triangles.
  const auto line = nlohmann::json::parse(ReadFileBytes(work + "/s.jsonl"));
  EXPECT_EQ(line["layout"], "flat");
  EXPECT_EQ(line["vertexCount"], 19200);
  EXPECT_EQ(line["triangleCount"], 37842);
  EXPECT_EQ(line["bytes"], 12 * 19200 + 12 * 37842 + 9);
  EXPECT_EQ(ReadFileBytes(work + "/out/frame_000000.bin").size(), 12u * 19200 + 12 * 37842 + 9);
}

TEST(ZeltoMeshRun, ReferenceLayoutRawFileIsTheTwentyEightByteRecord) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result =
      RunZeltoMesh({"run", "--frames", "1", "--format", "raw", "--quiet"}, work);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const std::string bytes = ReadFileBytes(work + "/out/frame_000000.bin");
  ASSERT_EQ(bytes.size(), 28u);
  int32_t vertex_count = 0;
  int32_t triangle_count = 0;
  std::memcpy(&vertex_count, bytes.data(), 4);
  std::memcpy(&triangle_count, bytes.data() + 12, 4);
  EXPECT_EQ(vertex_count, 307200);
  EXPECT_EQ(triangle_count, 612162);
  EXPECT_EQ(bytes[24], 0);  // frame 1 of period 4: no re-fit
}

}  // namespace
}  // namespace ZeltoCliTest

namespace ZeltoCliTest {
namespace {

// On a terminal the bar counts the frames and is erased before the summary.
TEST(ZeltoMeshProgress, DrawnOnlyOnATerminal) {
  const ProcessResult shown =
      RunZeltoMeshOnTerminal({"run", "--frames", "3", "--format", "none"}, FreshDirectory("work"));
  ASSERT_EQ(shown.exitCode, 0) << shown.err;
  // A terminal turns "\n" into "\r\n"; the bar has none.
  EXPECT_NE(shown.err.find("\r[##########--------------------]  1/3 frames  "), std::string::npos)
      << shown.err;
  EXPECT_NE(shown.err.find("\r[##############################]  3/3 frames  "), std::string::npos)
      << shown.err;
  EXPECT_EQ(shown.err.substr(shown.err.size() - 5), "\r\x1b[2K");
  EXPECT_EQ(SplitLines(shown.out)[0], "3 frames from the synthetic scene, reference layout");

  const ProcessResult quiet = RunZeltoMeshOnTerminal(
      {"run", "--frames", "3", "--format", "none", "--quiet"}, FreshDirectory("quiet"));
  ASSERT_EQ(quiet.exitCode, 0);
  EXPECT_EQ(quiet.err, "");
  EXPECT_EQ(quiet.out, "");
}

TEST(ZeltoMeshProgress, ATimeOutLeavesOnlyTheErrorOnTheTerminal) {
  const ProcessResult result = RunZeltoMeshOnTerminal(
      {"run", "--input", RedwoodDirectory(), "--no-player", "--frame-rate", "15", "--timeout",
       "200", "--format", "none"},
      FreshDirectory("work"));
  EXPECT_EQ(result.exitCode, 3);
  // No frame came, so no bar was drawn and nothing needs erasing.
  EXPECT_EQ(result.err,
            "error: no frame from the mesh stream within 200 ms: --frame-rate 15 plays "
            "\"player_tof_stream\", which --no-player leaves out\r\n");
}

}  // namespace
}  // namespace ZeltoCliTest
