// Every way a zelto-mesh run fails as its user sees it: the exit status, the
// one line on stderr, and nothing written.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>

#include <zlib.h>

#include "process_runner.h"
#include "zelto_sim/png_io.h"

namespace ZeltoCliTest {
namespace {

const std::string kRedwood = std::string(ZELTO_EXAMPLES_DIR) + "/redwood";

// `*`: the words of a library (JSON parser, loader, MessagePack); only the program's are pinned.
TEST(ZeltoMesh, EveryFailureExitsWithOneLineAndWritesNothing) {
  const std::string at = FreshDirectory("fixtures");
  for (const char* name : {"/not_json", "/eight_bit/depth", "/short_cloud/pointcloud", "/lib",
                           "/old", "/small", "/odd_color/color", "/cut_jpeg/rgb", "/lists",
                           "/skipped/depth"}) {
    std::filesystem::create_directories(at + name);
  }
  const char* camera = R"({"width": 2, "height": 2, "fx": 2, "fy": 2, "cx": 1, "cy": 1})";
  std::ofstream(at + "/not_json/intrinsics.json") << "{";
  std::ofstream(at + "/eight_bit/intrinsics.json") << camera;
  std::ofstream(at + "/short_cloud/intrinsics.json") << camera;
  const uint8_t samples[4] = {1, 2, 3, 4};
  ASSERT_TRUE(ZeltoSim::WriteGrayPng(at + "/eight_bit/depth/0.png", 2, 2, 8, samples).ok());
  std::ofstream(at + "/short_cloud/pointcloud/0.bin") << std::string(23, '\0');
  std::ofstream(at + "/lib/libcomponent_zelto_sim.so") << "not a library";
  std::ofstream(at + "/old/frame_000000.ply") << "an earlier run";
  std::ofstream(at + "/old/frame_000007.obj") << "an earlier run";
  // A file size limit stands for a full disk: writes fail with EFBIG, not with a signal.
  const std::string full_disk = "trap '' XFSZ; ulimit -f 1000; exec \"$0\" \"$@\"";
  const uint16_t depth[4] = {1000, 1000, 1000, 1000};
  for (const char* name : {"/damaged", "/odd_color", "/cut_jpeg"}) {
    std::filesystem::create_directories(at + name + "/depth");
    std::ofstream(at + name + "/intrinsics.json") << camera;
    ASSERT_TRUE(ZeltoSim::WriteGrayPng(at + name + "/depth/0.png", 2, 2, 16, depth).ok());
  }
  std::string png = ReadFileBytes(at + "/damaged/depth/0.png");
  png[45] ^= 1;  // in the compressed image data, as a flipped bit on disk would be
  std::ofstream(at + "/damaged/depth/0.png", std::ios::binary) << png;
  ASSERT_TRUE(ZeltoSim::WriteGrayPng(at + "/odd_color/color/0.png", 3, 1, 8, samples).ok());
  std::ofstream(at + "/cut_jpeg/rgb/0.jpg", std::ios::binary)
      << ReadFileBytes(kRedwood + "/color/00000.jpg").substr(0, 5000);
  std::ofstream(at + "/lists/depth.txt") << "0.5 depth/0.png\n";
  // Intact markers and header around garbled image data: found only by decoding, mid-run.
  std::filesystem::create_directories(at + "/garbled/depth");
  std::filesystem::create_directories(at + "/garbled/color");
  std::filesystem::copy(kRedwood + "/intrinsics.json", at + "/garbled/");
  std::filesystem::copy(kRedwood + "/depth/00000.png", at + "/garbled/depth/");
  std::string jpeg = ReadFileBytes(kRedwood + "/color/00000.jpg");
  jpeg.replace(20000, 400, 400, '\xab');
  std::ofstream(at + "/garbled/color/0.jpg", std::ios::binary) << jpeg;
  // Image data that no longer inflates, under a CRC that still matches: only the decode
  // finds it, and the device stops there.
  for (const char* name : {"/0.png", "/1.png", "/2.png"}) {
    std::filesystem::copy(at + "/odd_color/depth/0.png", at + "/skipped/depth" + std::string(name));
  }
  std::ofstream(at + "/skipped/intrinsics.json") << camera;
  png = ReadFileBytes(at + "/odd_color/depth/0.png");
  png.replace(41, 2, "\xff\xff");  // the zlib header of the IDAT chunk at byte 33
  const auto* idat = reinterpret_cast<const Bytef*>(png.data() + 37);
  const uint32_t crc = crc32(0, idat, 4 + (uint8_t(png[35]) << 8 | uint8_t(png[36])));
  for (int i = 0; i < 4; ++i) png[png.size() - 16 + i] = char(crc >> (24 - 8 * i));
  std::ofstream(at + "/skipped/depth/1.png", std::ios::binary) << png;
  const std::tuple<std::vector<std::string>, int, std::string> cases[] = {
      {{"run", "--mask", ":depth"}, 2,
       "error: --mask: ':depth' has no mask name (NAME[:color|:depth][:invert])"},
      {{"run", "--frame-rate", "15/0"}, 2,
       "error: --frame-rate: '15/0' is not NUM[/DEN] with unsigned 32-bit numbers and DEN > 0"},
      {{"run", "--set", "k"}, 2, "error: --set: 'k' is not KEY=JSON"},
      {{"run", "--set", "k={"}, 2, "error: --set: 'k={': invalid JSON: *"},
      {{"run", "--set", "k=[1]"}, 2,
       "error: --set: 'k=[1]': the value must be a JSON object (a property is a map)"},
      {{"run", "--log-level", "loud"}, 2, "error: --log-level: 'loud' is not a log level "
                                          "(verbose, debug, info, warn, error, silent or 2..8)"},
      {{"mesh"}, 2, "error: unknown command 'mesh' (run or info)"},
      {{"run", "--format", "raw"}, 2, "error: --format raw writes the self-contained flat layout: add "
       "--layout flat (a reference-layout frame is a record of addresses inside this process)"},
      {{"run", "--playback"}, 2, "error: --playback plays a recording: add --input DIR"},
      {{"run", "--input", kRedwood, "--playback", "--layout", "flat"}, 2, "error: --playback delivers "
       "the reference layout: it cannot be combined with --layout flat"},
      {{"run", "--max-edge-jump", "-1"}, 2, "error: --max-edge-jump: '-1' is neither a fraction of "
       "the depth above 0 (such as 0.05) nor off"},
      {{"run", "--out", at + "/old"}, 2, "error: --out " + at + "/old holds 2 frame files of another "
       "run (frame_000000.ply ... frame_000007.obj): add --replace to remove them first, or choose "
       "another --out"},
      {{"run", "--preview", at}, 2, "error: --preview " + at + ": a directory, expected a file name"},
      {{"run", "--stats", at + "/old/frame_000000.ply/s.jsonl"}, 2, "error: --stats " + at +
       "/old/frame_000000.ply/s.jsonl: " + at + "/old/frame_000000.ply is not a directory"},
      {{"sh", "-c", full_disk, "run", "--input", kRedwood, "--out", at + "/small"}, 1,
       "error: cannot write " + at + "/small/frame_000000.ply: File too large"},
      {{"run", "--input", at + "/none"}, 2, "error: " + at + "/none: not a directory"},
      {{"run", "--input", at + "/not_json"}, 2,
       "error: " + at + "/not_json/intrinsics.json: invalid JSON: *"},
      {{"run", "--input", at + "/eight_bit"}, 2,
       "error: " + at + "/eight_bit/depth/0.png: 8-bit grayscale PNG, expected 16-bit grayscale"},
      {{"run", "--input", at + "/short_cloud"}, 2,
       "error: " + at + "/short_cloud/pointcloud/0.bin: 23 bytes, expected 24 (2 x 2 x 6)"},
      {{"run", "--input", at + "/damaged"}, 2, "error: " + at + "/damaged/depth/0.png: damaged "
       "PNG (bad CRC in the IDAT chunk at byte 33)"},
      {{"run", "--input", at + "/odd_color"}, 2, "error: " + at + "/odd_color/color/0.png: 3 x 1 "
       "pixels, the depth images are 2 x 2"},
      {{"run", "--input", at + "/cut_jpeg"}, 2,
       "error: " + at + "/cut_jpeg/rgb/0.jpg: damaged JPEG (no end marker)"},
      {{"run", "--input", at + "/lists"}, 2, "error: " + at + "/lists/intrinsics.json: missing "
       "(depth.txt lists carry no camera: write its width, height and intrinsic_matrix or fx, fy, "
       "cx, cy here)"},
      {{"run", "--input", at + "/garbled", "--format", "none", "--preview", "p.png"}, 2,
       "error: frame 0: " + at + "/garbled/color/0.jpg: damaged JPEG (*)"},
      {{"run", "--input", at + "/skipped", "--format", "none"}, 2, "error: frame 1: " + at +
       "/skipped/depth/1.png: not a readable PNG (*)"},
      {{"run", "--mask", "nose"}, 2,
       "error: --mask nose: not a mask of the synthetic scene; known masks: floor, person"},
      {{"run", "--input", kRedwood, "--mask", "person"}, 2,
       "error: --mask person: not a mask of " + kRedwood + "; it has no masks"},
      {{"run", "--input", kRedwood, "--frames", "6"}, 2,
       "error: --frames 6: " + kRedwood + " has 5 frames"},
      // The component's own text is pinned where clients meet it, with the properties.
      {{"run", "--reduction=-1"}, 1,
       "error: set kZeltoMeshAlgorithmConfigKey: * (cause 2, block ZeltoMesh)"},
      {{"run", "--set", "channel_info_property={}"}, 1, "error: set channel_info_property: not "
       "available to set channel_info_property (cause 10, block core)"},
      {{"run", "--set", R"(kZeltoMeshAlgorithmConfigKey={"meshReductionLevel":true})"}, 1,
       "error: set kZeltoMeshAlgorithmConfigKey: what=*, buffer_size=42, offset=0, "
       "current=42(0x00) (cause 8, block core)"},
      // The host looks in WEFTCORE_COMPONENT_PATH first: the mesh source's
      // Open fails on its first upstream stream.
      {{"WEFTCORE_COMPONENT_PATH=" + at + "/lib", "run"}, 1, "error: open mesh: cannot load "
       "component library component_zelto_sim: " + at + "/lib/libcomponent_zelto_sim.so: * "
       "(cause 9, block core)"},
      {{"run", "--frames", "1", "--format", "none", "--get", "kNo", "--preview", "p.png"}, 1,
       "error: get kNo: property kNo is not registered (cause 4, block core)"},
      {{"run", "--frame-rate", "15", "--timeout", "300", "--format", "none"}, 3,
       "error: no frame from the mesh stream within 300 ms: --frame-rate 15 plays "
       "\"player_tof_stream\", which needs a recording (--input DIR)"},
      {{"run", "--input", kRedwood, "--no-player", "--frame-rate", "15", "--timeout", "300",
        "--format", "none"}, 3, "error: no frame from the mesh stream within 300 ms: "
       "--frame-rate 15 plays \"player_tof_stream\", which --no-player leaves out"},
  };
  for (const auto& [arguments, exit_code, line] : cases) {
    SCOPED_TRACE(line);
    const std::string work = FreshDirectory("work");
    const auto command = std::find_if(arguments.begin(), arguments.end(), [](const std::string& word) {
      return word == "run" || word == "mesh";  // before it: variables or a wrapper
    });
    const ProcessResult result =
        RunZeltoMesh({command, arguments.end()}, work, {arguments.begin(), command});
    EXPECT_EQ(result.exitCode, exit_code);
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(std::filesystem::is_empty(work)) << "written before the failure";
    std::string pattern;
    for (const char c : line + "\n") {
      const bool special = std::strchr("\\^$.|?+()[]{}", c) != nullptr;
      pattern += c == '*' ? "[^\n]*" : special ? std::string("\\") + c : std::string(1, c);
    }
    EXPECT_TRUE(std::regex_match(result.err, std::regex(pattern))) << result.err;
  }
  EXPECT_TRUE(std::filesystem::is_empty(at + "/small")) << "a partial file was left";
}

}  // namespace
}  // namespace ZeltoCliTest
