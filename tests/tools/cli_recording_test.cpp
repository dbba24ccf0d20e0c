// Runs on the recording examples/redwood: live and played back, raw, PLY and
// OBJ output checked against the recording itself.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli_test_helpers.h"
#include "strict_ply_reader.h"
#include "support/redwood_checksums.h"
#include "support/redwood_frame.h"
#include "zelto_sim/recording.h"

namespace ZeltoCliTest {
namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 480;

// Vertex validity of redwood frame 0 as Part 2.1 decides it: depth >= 10 mm.
std::vector<bool> ValidVertices() {
  const ZeltoTest::PointCloudImage image = ZeltoTest::LoadRedwoodFrame(0);
  std::vector<bool> valid(static_cast<size_t>(kWidth) * kHeight);
  for (size_t pixel = 0; pixel < valid.size(); ++pixel) valid[pixel] = image.points[3 * pixel + 2] >= 10;
  return valid;
}

// Triangles of the default split (no re-fit) whose corners are all valid.
int64_t ValidDefaultTriangles(const std::vector<bool>& valid) {
  int64_t count = 0;
  for (int j = 0; j + 1 < kHeight; ++j) {
    for (int i = 0; i + 1 < kWidth; ++i) {
      const size_t b = static_cast<size_t>(j) * kWidth + i;
      count += valid[b] && valid[b + 1] && valid[b + kWidth];
      count += valid[b + 1] && valid[b + kWidth + 1] && valid[b + kWidth];
    }
  }
  return count;
}

std::vector<std::string> StatsLines(const std::string& path) { return SplitLines(ReadFileBytes(path)); }

// Channel 0 of the first frame, exactly as delivered in the flat layout.
std::string RawFlatFrame(const std::string& reset_period) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result =
      RunZeltoMesh({"run", "--input", RedwoodDirectory(), "--frame-rate", "30", "--format", "raw",
                    "--frames", "1", "--reset-period", reset_period, "--quiet"},
                   work);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.err, "");
  return ReadFileBytes(work + "/out/frame_000000.bin");
}

TEST(ZeltoMeshRecording, RawResetFrameMatchesThePinnedChecksum) {
  const std::string bytes = RawFlatFrame("1");
  ASSERT_EQ(bytes.size(), ZeltoTest::kRedwoodFrame0FlatSize);
  EXPECT_EQ(bytes.back(), 1);
  EXPECT_EQ(ZeltoTest::Fnv1a64(bytes.data(), bytes.size()),
            ZeltoTest::kRedwoodFrame0FlatResetFnv1a64);
}

TEST(ZeltoMeshRecording, RawNonResetFrameMatchesThePinnedChecksum) {
  const std::string bytes = RawFlatFrame("1000");
  ASSERT_EQ(bytes.size(), ZeltoTest::kRedwoodFrame0FlatSize);
  EXPECT_EQ(bytes.back(), 0);
  EXPECT_EQ(ZeltoTest::Fnv1a64(bytes.data(), bytes.size()),
            ZeltoTest::kRedwoodFrame0FlatNonResetFnv1a64);
}

TEST(ZeltoMeshRecording, PlyLeavesOutExactlyTheInvalidDepths) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result = RunZeltoMesh({"run", "--input", RedwoodDirectory(), "--frames", "1",
                                             "--reset-period", "1000", "--quiet"},
                                            work);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  PlyMesh mesh;
  std::string error;
  ASSERT_TRUE(ReadStrictPly(ReadFileBytes(work + "/out/frame_000000.ply"), &mesh, &error)) << error;
  const std::vector<bool> valid = ValidVertices();
  const int64_t valid_vertices = std::count(valid.begin(), valid.end(), true);
  ASSERT_GT(valid_vertices, 0);
  ASSERT_LT(valid_vertices, kWidth * kHeight);  // the frame has holes to leave out
  EXPECT_EQ(static_cast<int64_t>(mesh.vertices.size() / 3), valid_vertices);
  EXPECT_EQ(static_cast<int64_t>(mesh.triangles.size() / 3), ValidDefaultTriangles(valid));

  // The first valid pixel is the first vertex, in metres (Part 2.1 step 4).
  const ZeltoTest::PointCloudImage image = ZeltoTest::LoadRedwoodFrame(0);
  const size_t first = static_cast<size_t>(std::find(valid.begin(), valid.end(), true) - valid.begin());
  const float u = static_cast<float>(first % kWidth);
  const float v = static_cast<float>(first / kWidth);
  const float z = image.points[3 * first + 2];
  EXPECT_EQ(mesh.vertices[0], ((u - 319.5f) * (z / 525.0f)) / 1000);
  EXPECT_EQ(mesh.vertices[1], ((v - 239.5f) * (z / 525.0f)) / 1000);
  EXPECT_EQ(mesh.vertices[2], z / 1000);
}

TEST(ZeltoMeshRecording, KeepInvalidWritesTheWholeGrid) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result = RunZeltoMesh(
      {"run", "--input", RedwoodDirectory(), "--frames", "1", "--keep-invalid", "--quiet"}, work);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  PlyMesh mesh;
  std::string error;
  ASSERT_TRUE(ReadStrictPly(ReadFileBytes(work + "/out/frame_000000.ply"), &mesh, &error)) << error;
  EXPECT_EQ(mesh.vertices.size(), 3u * 307200);
  EXPECT_EQ(mesh.triangles.size(), 3u * 612162);
  const std::vector<bool> valid = ValidVertices();
  for (size_t vertex = 0; vertex < valid.size(); ++vertex) {
    if (!valid[vertex]) {
      ASSERT_EQ(mesh.vertices[3 * vertex + 2], 32001.0f / 1000.0f) << vertex;
    }
  }
}

TEST(ZeltoMeshRecording, ObjHasTheSameMeshAsPly) {
  const std::string work = FreshDirectory("work");
  ASSERT_EQ(RunZeltoMesh({"run", "--input", RedwoodDirectory(), "--frames", "1", "--format", "obj",
                          "--reduction", "7", "--out", "obj", "--quiet"},
                         work)
                .exitCode,
            0);
  ASSERT_EQ(RunZeltoMesh({"run", "--input", RedwoodDirectory(), "--frames", "1", "--reduction",
                          "7", "--out", "ply", "--quiet"},
                         work)
                .exitCode,
            0);
  PlyMesh ply;
  std::string error;
  ASSERT_TRUE(ReadStrictPly(ReadFileBytes(work + "/ply/frame_000000.ply"), &ply, &error)) << error;
  const std::vector<std::string> lines = SplitLines(ReadFileBytes(work + "/obj/frame_000000.obj"));
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines[0], "# zelto-mesh, metres, camera coordinates");
  std::vector<float> vertices;
  std::vector<int32_t> triangles;
  for (size_t i = 1; i < lines.size(); ++i) {
    float x, y, z;
    int a, b, c;
    if (std::sscanf(lines[i].c_str(), "v %f %f %f", &x, &y, &z) == 3) {
      vertices.insert(vertices.end(), {x, y, z});
    } else if (std::sscanf(lines[i].c_str(), "f %d %d %d", &a, &b, &c) == 3) {
      triangles.insert(triangles.end(), {a - 1, b - 1, c - 1});
    } else {
      FAIL() << "unexpected OBJ line " << lines[i];
    }
  }
  EXPECT_EQ(vertices, ply.vertices);  // shortest round-trip text: exact floats
  EXPECT_EQ(triangles, ply.triangles);
  // Reduction 7: an 80 x 60 grid, less the holes of the recording.
  EXPECT_GT(ply.vertices.size(), 3u * 4000);
  EXPECT_LT(ply.vertices.size(), 3u * 80 * 60);
}

// Every frame of the recording, through "player_tof_stream" at 15 per second.
TEST(ZeltoMeshRecording, PlaybackDeliversEveryFrameWithTheRecordingsTimestamps) {
  ZeltoSim::Recording recording;
  ASSERT_TRUE(ZeltoSim::LoadRecording(RedwoodDirectory(), &recording).ok());
  ASSERT_EQ(recording.frameFiles.size(), 5u);

  const std::string work = FreshDirectory("work");
  const ProcessResult result =
      RunZeltoMesh({"run", "--input", RedwoodDirectory(), "--frame-rate", "15", "--format",
                    "none", "--stats", "stats.jsonl"},
                   work);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(SplitLines(result.out)[0], "5 frames from " + RedwoodDirectory() + ", reference layout");
  const std::vector<std::string> lines = StatsLines(work + "/stats.jsonl");
  ASSERT_EQ(lines.size(), 5u);
  for (size_t i = 0; i < lines.size(); ++i) {
    const auto line = nlohmann::json::parse(lines[i]);
    EXPECT_EQ(line["sequenceNumber"], i);
    EXPECT_EQ(line["capturedTimestamp"], recording.timestamps[i]);
    EXPECT_EQ(line["layout"], "reference");  // 15 is not 30
    EXPECT_EQ(line["vertexCount"], 307200);
  }
  EXPECT_FALSE(Exists(work + "/out"));  // --format none writes no meshes
}

TEST(ZeltoMeshRecording, FrameRate30GivesTheFlatLayoutFromTheLiveStream) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result = RunZeltoMesh({"run", "--input", RedwoodDirectory(), "--frame-rate",
                                             "30", "--format", "none", "--stats", "s.jsonl",
                                             "--quiet"},
                                            work);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const std::vector<std::string> lines = StatsLines(work + "/s.jsonl");
  ASSERT_EQ(lines.size(), 5u);
  for (const std::string& text : lines) {
    const auto line = nlohmann::json::parse(text);
    EXPECT_EQ(line["layout"], "flat");
    EXPECT_EQ(line["bytes"], 12 * 307200 + 12 * 612162 + 9);
  }
}

}  // namespace
}  // namespace ZeltoCliTest
