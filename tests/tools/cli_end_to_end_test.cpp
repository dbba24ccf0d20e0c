// zelto-mesh as a user runs it: the built program with the built plug-ins,
// on the synthetic scene and on the recording examples/redwood.
#include <tiny_gltf.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "strict_ply_reader.h"
#include "support/redwood_checksums.h"
#include "support/redwood_frame.h"
#include "zelto_sim/png_io.h"
#include "zelto_sim/recording.h"

namespace ZeltoCliTest {
namespace {

const std::string kRedwood = std::string(ZELTO_EXAMPLES_DIR) + "/redwood";

using Args = std::vector<std::string>;

Args With(Args run, const Args& more) {
  run.insert(run.end(), more.begin(), more.end());
  return run;
}
const Args kRedwoodFrame = {"run", "--input", kRedwood, "--frames", "1", "-q"};

// `make run`'s command on 8 frames, two of them re-fits: 60 meshes take half a gigabyte.
TEST(ZeltoMesh, MakeRunCommandWritesMeshesPreviewStatsAndSummary) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result = RunZeltoMesh({"run", "--frames", "8", "--mask", "person", "--out",
      "out", "--preview", "out/preview.png", "--stats", "out/stats.jsonl"}, work);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err, "");  // stderr is no terminal: no progress bar
  EXPECT_EQ(std::regex_replace(result.out, std::regex("[0-9]+\\.[0-9] (ms|MB|frames)"), "N $1"),
            "8 frames from the synthetic scene, reference layout\n  vertices per frame   307200\n"
            "  triangles per frame  612162\n  median GetFrame      N ms per frame, writing not included\n"
            "  frame rate           N frames per second\n"
            "  meshes               out/frame_000000.ply ... out/frame_000007.ply\n  written              N MB\n"
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
    for (size_t z = 2; z < mesh.vertices.size(); z += 3) ASSERT_NE(mesh.vertices[z], -32.001f);
  }
  EXPECT_EQ(std::regex_replace(ReadFileBytes(work + "/out/stats.jsonl"),
                               std::regex("\"buildMs\":[0-9.]*[1-9][0-9.]*\\}"), "\"buildMs\":T}"),
            stats);
  ZeltoSim::PngInfo png;
  EXPECT_TRUE(ZeltoSim::ReadPngInfo(work + "/out/preview.png", &png).ok() && png.width == 640);
  std::filesystem::remove_all(work);
}

TEST(ZeltoMesh, RawRedwoodFrameMatchesThePinnedChecksums) {
  for (const auto& [period, checksum] :
       {std::pair("1", ZeltoTest::kRedwoodFrame0FlatResetFnv1a64),
        std::pair("1000", ZeltoTest::kRedwoodFrame0FlatNonResetFnv1a64)}) {
    SCOPED_TRACE(std::string("reset period ") + period);
    const std::string work = FreshDirectory("work");
    const Args raw = {"--layout", "flat", "--format", "raw", "--reset-period"};
    ASSERT_EQ(RunZeltoMesh(With(With(kRedwoodFrame, raw), {period}), work).exitCode, 0);
    const std::string bytes = ReadFileBytes(work + "/out/frame_000000.bin");
    ASSERT_EQ(bytes.size(), ZeltoTest::kRedwoodFrame0FlatSize);
    EXPECT_EQ(ZeltoTest::Fnv1a64(bytes.data(), bytes.size()), checksum);
  }
}

// Pixels closer than 10 mm are the invalid vertices of the mesh; the skirt
// rule, the winding and the axes are checked against the camera's grid; the
// GLB, read by tinygltf, holds the PLY's mesh.
TEST(ZeltoMesh, FilesHoldTheCleanedGridWoundTowardsTheCamera) {
  const std::string work = FreshDirectory("work");
  const Args camera = {"--axes", "camera", "--max-edge-jump", "off"};
  for (const Args& out : {With({"a", "--keep-invalid"}, camera), With({"valid"}, camera), Args{"clean"},
                          Args{"g", "--format=glb"}}) {
    ASSERT_EQ(RunZeltoMesh(With(kRedwoodFrame, With({"--out"}, out)), work).exitCode, 0);
  }
  const PlyMesh all = ReadPly(work + "/a/frame_000000.ply");
  const PlyMesh valid = ReadPly(work + "/valid/frame_000000.ply");
  const PlyMesh clean = ReadPly(work + "/clean/frame_000000.ply");
  ASSERT_EQ(all.vertices.size(), 3u * 640 * 480);
  EXPECT_EQ(all.triangles.size(), 3u * 612162);
  const ZeltoTest::PointCloudImage image = ZeltoTest::LoadRedwoodFrame(0);
  std::vector<bool> in(640 * 480), used(in.size());
  for (size_t p = 0; p < in.size(); ++p) {
    in[p] = image.points[3 * p + 2] >= 10;
    ASSERT_TRUE(in[p] || all.vertices[3 * p + 2] == 32.001f) << p;
  }
  size_t triangles = 0;  // (b, b+1, b+w) and (b+1, b+w+1, b+w) of a cell, no re-fit
  for (size_t b = 0; b + 641 < in.size(); b += b % 640 == 638 ? 2 : 1) {
    for (const std::array<size_t, 3> corner : {std::array{b, b + 1, b + 640}, std::array{b + 1, b + 641, b + 640}}) {
      if (!in[corner[0]] || !in[corner[1]] || !in[corner[2]]) continue;
      ++triangles;
      for (const size_t p : corner) used[p] = true;
    }
  }
  std::vector<float> kept;  // the valid vertices a triangle uses
  for (size_t p = 0; p < in.size(); ++p) {
    if (used[p]) kept.insert(kept.end(), &all.vertices[3 * p], &all.vertices[3 * p + 3]);
  }
  EXPECT_EQ(valid.vertices, kept);
  EXPECT_EQ(valid.triangles.size(), 3 * triangles);
  // Counter-clockwise as the camera sees the picture (y down): negative area.
  // Without skirts: corners within 5 % of the nearest depth, in OpenGL axes.
  size_t clockwise = 0, smooth = 0;
  std::vector<float> smooth_vertices;
  std::vector<bool> seen(valid.vertices.size() / 3);
  for (size_t t = 0; t < valid.triangles.size(); t += 3) {
    const auto at = [&](size_t k, int axis) { return valid.vertices[3 * size_t(valid.triangles[t + k]) + axis]; };
    const auto seen_at = [&](size_t k, int axis) { return at(k, axis) / at(k, 2); };
    clockwise += (seen_at(1, 0) - seen_at(0, 0)) * (seen_at(2, 1) - seen_at(0, 1)) -
                     (seen_at(1, 1) - seen_at(0, 1)) * (seen_at(2, 0) - seen_at(0, 0)) >= 0;
    const double near = std::min({at(0, 2), at(1, 2), at(2, 2)});
    if (std::max({at(0, 2), at(1, 2), at(2, 2)}) - near > 0.05 * near) continue;
    ++smooth;
    for (size_t k = 0; k < 3; ++k) seen[size_t(valid.triangles[t + k])] = true;
  }
  for (size_t v = 0; v < seen.size(); ++v) {
    if (seen[v]) smooth_vertices.insert(smooth_vertices.end(), {valid.vertices[3 * v], -valid.vertices[3 * v + 1], -valid.vertices[3 * v + 2]});
  }
  EXPECT_EQ(clockwise, 0u);
  EXPECT_EQ(clean.triangles.size(), 3 * smooth);
  EXPECT_EQ(clean.vertices, smooth_vertices);

  tinygltf::Model glb;
  std::string error, warning;
  ASSERT_TRUE(tinygltf::TinyGLTF().LoadBinaryFromFile(&glb, &error, &warning, work + "/g/frame_000000.glb")) << error;
  const tinygltf::Primitive& primitive = glb.meshes.at(0).primitives.at(0);
  for (const auto& [accessor, values] : {std::pair(primitive.attributes.at("POSITION"), &clean.vertices),
                                         std::pair(primitive.attributes.at("NORMAL"), &clean.normals)}) {
    const tinygltf::BufferView& view = glb.bufferViews.at(size_t(glb.accessors.at(size_t(accessor)).bufferView));
    ASSERT_EQ(view.byteLength, 4 * values->size());
    EXPECT_EQ(std::memcmp(&glb.buffers.at(0).data.at(view.byteOffset), values->data(), 4 * values->size()), 0);
  }
  EXPECT_EQ(glb.accessors.at(size_t(primitive.indices)).count, clean.triangles.size());
  std::ofstream(work + "/g/notes.txt") << "kept";  // --replace removes the frames, nothing else
  ASSERT_EQ(RunZeltoMesh(With(kRedwoodFrame, {"--out", "g", "--replace", "--format", "obj"}), work).exitCode, 0);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(work + "/g"), {}), 2);
  EXPECT_TRUE(std::filesystem::exists(work + "/g/frame_000000.obj"));
}

TEST(ZeltoMesh, PlaybackDeliversEveryRecordedFrameWithItsTimestamp) {
  const std::string work = FreshDirectory("work");
  const ProcessResult result = RunZeltoMesh(
      {"run", "--input", kRedwood, "--playback", "--format", "none", "--stats", "s"}, work);
  EXPECT_EQ(result.out.substr(0, result.out.find('\n')),
            "5 frames from " + kRedwood + ", reference layout");
  const std::string stats = ReadFileBytes(work + "/s");
  size_t line = 0;  // no timestamps.txt: frame i at i x 33333333 ns, one frame per line
  for (const uint64_t timestamp : {0, 33333333, 66666666, 99999999, 133333332}) {
    line = stats.find("\"capturedTimestamp\":" + std::to_string(timestamp) + ",", line + 1);
    EXPECT_LT(line, stats.find('\n', line)) << timestamp;
  }
}

// Properties go in and come out through their serialized path, as a client
// sends and reads them; `info` shows those of a fresh source.
TEST(ZeltoMesh, PropertiesAreSetBeforeTheStartAndReadAfterTheRun) {
  const Args run = {"run", "--frames", "1", "--format", "none", "-q"};
  const std::pair<Args, std::string> cases[] = {
      {{"info"},
       "component component_zelto_mesh\nsource types mesh (0)\n"
       "properties of a \"mesh\" source after Open\n  channel_info_property {\"channels\":"
       "{\"0\":{\"raw_data_type\":\"kRawDataTypeMesh\",\"description\":\"Mesh Data\"}}}\n"
       "  frame_rate_property {\"num\":30,\"denom\":1}\n  kZeltoLogLevelKey {\"logLevel\":8}\n"
       "  kZeltoMeshAlgorithmConfigKey {\"meshReductionLevel\":0,\"resetTrianglePeriod\":4}\n"
       "  kZeltoMeshMaskSettingsKey {\"enabled\":false,\"maskInfo\":[],\"maskThreshold\":55}\n"},
      {With(run, {"--reduction", "2", "--frame-rate", "60", "--get", "frame_rate_property", "--get",
                  "kZeltoMeshAlgorithmConfigKey", "--hex"}),  // the source keeps its frame rate
       "frame_rate_property {\"num\":30,\"denom\":1}\n82a36e756d1ea564656e6f6d01\n"
       "kZeltoMeshAlgorithmConfigKey {\"meshReductionLevel\":2,\"resetTrianglePeriod\":4}\n"
       "82b26d657368526564756374696f6e4c6576656c02b37265736574547269616e676c65506572696f6404\n"},
      {With(run, {"--mask", "person", "--mask", "floor:depth:invert", "--mask-threshold", "200",
                  "--get", "kZeltoMeshMaskSettingsKey"}),
       "kZeltoMeshMaskSettingsKey {\"enabled\":true,\"maskInfo\":[{\"name\":\"person\","
       "\"isColorSource\":true,\"isInvertMask\":false},{\"name\":\"floor\",\"isColorSource\":"
       "false,\"isInvertMask\":true}],\"maskThreshold\":200}\n"},
      {With(run, {"--set", R"(kZeltoLogLevelKey={"logLevel":6})", "--get", "kZeltoLogLevelKey"}),
       "kZeltoLogLevelKey {\"logLevel\":6}\n"},
      {With(run, {"--reduction", "2", "--set", R"(kZeltoMeshAlgorithmConfigKey={"resetTrianglePeriod":1})",
                  "--get", "kZeltoMeshAlgorithmConfigKey"}),  // one field changes, --reduction stays
       "kZeltoMeshAlgorithmConfigKey {\"meshReductionLevel\":2,\"resetTrianglePeriod\":1}\n"},
      {{"--version"}, "zelto-mesh 0.1.0\n"},
  };
  for (const auto& [arguments, out] : cases) {
    SCOPED_TRACE(arguments.back());
    const ProcessResult result = RunZeltoMesh(arguments, FreshDirectory("work"));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, out);
    EXPECT_EQ(result.err, "");
  }
}

TEST(ZeltoMesh, HelpStatesTheDefaultsInUse) {
  const std::string help = RunZeltoMesh({"run", "--help"}, FreshDirectory("work")).out;
  for (const char* text : {"files (default: out)", "files (default: ply)", "(default: 5000)",
                           "the source's (55)", "60 for the synthetic scene", "(default: 0.05)",
                           "(default: opengl)", "(default: reference)", "(default: camera)"}) {
    EXPECT_NE(help.find(text), help.npos) << text;
  }
}

// On a terminal the bar counts the frames, fits the width and is erased before the summary.
TEST(ZeltoMesh, ProgressBarOnlyOnATerminalAndNotWhenQuiet) {
  const Args run = {"run", "--frames", "3", "--format", "none"};
  const ProcessResult shown = RunZeltoMesh(run, FreshDirectory("shown"), {"COLUMNS=50"}, true);
  const std::regex line("(\r\\[#*-*\\]  [123]/3 frames  [0-9.]+ fps  ETA 0:0[0-9])+\r\x1b\\[2K");
  EXPECT_TRUE(std::regex_match(shown.err, line)) << shown.err;
  std::istringstream drawn(shown.err);
  for (std::string text; std::getline(drawn, text, '\r');) EXPECT_LE(text.size(), 49u) << text;  // 50 columns, the last free
  EXPECT_EQ(shown.err.substr(shown.err.size() - 5), "\r\x1b[2K") << shown.err;
  EXPECT_EQ(shown.out.substr(0, shown.out.find('\n')),
            "3 frames from the synthetic scene, reference layout");
  const ProcessResult quiet = RunZeltoMesh(With(run, {"-q"}), FreshDirectory("quiet"), {}, true);
  EXPECT_EQ(quiet.exitCode + shown.exitCode, 0);
  EXPECT_EQ(quiet.err + quiet.out, "");
}

}  // namespace
}  // namespace ZeltoCliTest
