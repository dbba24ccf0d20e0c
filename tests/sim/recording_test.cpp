// Recordings as the simulator reads them: a real frame against an independent
// decode, the depth-to-point rule, and load errors zelto-mesh's table lacks.
#include "zelto_sim/recording.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "zelto_sim/png_io.h"

namespace ZeltoSim {
namespace {

// Values decoded from examples/redwood/depth/00000.png apart from libspng
// (Python zlib and the PNG filters), so that a byte-order slip would show.
TEST(Recording, RedwoodFrameMatchesAnIndependentDecode) {
  Recording recording;
  ASSERT_TRUE(LoadRecording(std::string(ZELTO_EXAMPLES_DIR) + "/redwood", &recording).ok());
  std::vector<int16_t> p;
  ASSERT_TRUE(ReadPointCloudFrame(recording, 0, &p).ok());
  std::vector<int64_t> found = {0, 0, 0};  // measured pixels, sum and greatest depth
  for (size_t i = 2; i < p.size(); i += 3) {
    found = {found[0] + (p[i] != 0), found[1] + p[i], std::max<int64_t>(found[2], p[i])};
  }
  for (const int pixel : {240 * 640 + 320, 100 * 640 + 200, 300 * 640 + 500}) {
    found.insert(found.end(), &p[3 * pixel], &p[3 * pixel + 3]);
  }
  found.insert(found.end(), recording.timestamps.begin(), recording.timestamps.end());
  EXPECT_EQ(found, std::vector<int64_t>({267129, 479199333, 2702, 2, 2, 2195, -383, -447, 1682, 690,
                                         231, 2007, 0, 33333333, 66666666, 99999999, 133333332}));
}

// In double precision, halves away from zero, z rounded before x and y use it.
TEST(Recording, DepthToPointRoundsAndClamps) {
  const std::vector<double> cases[] = {  // value, u, v, fx, fy, cx, cy, units per metre; x, y, z
      {1500, 3, 0, 500, 250, 1, 2, 1000, 6, -12, 1500}, {2, 1, 0, 4, 4, 0, 1, 1000, 1, -1, 2},
      {1, 1, 0, 4, 4, 0, 3, 1000, 0, -1, 1},            {1, 0, 0, 1, 1, 0, 0, 2000, 0, 0, 1},
      {5, 0, 0, 1, 1, 0, 0, 4000, 0, 0, 1},             {3, 1, 0, 4, 4, 0, 0, 2000, 1, 0, 2},
      {12345, 0, 0, 1, 1, 0, 0, 5000, 0, 0, 2469},      {3277, 0, 0, 1, 1, 0, 0, 100, 0, 0, 32767},
      {65535, 0, 0, 1, 1, 0, 0, 1000, 0, 0, 32767},
      {32767, 1000, 0, 100, 100, 0, 1000, 1000, 32767, -32768, 32767},
      {30000, 3, 2, 0.5, 0.5, 1.5, 0, 1000, 32767, 32767, 30000},
  };
  for (const std::vector<double>& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c));
    const Intrinsics intrinsics{4, 3, c[3], c[4], c[5], c[6], c[7]};
    const Point16 p = DepthToPoint(uint32_t(c[0]), int32_t(c[1]), int32_t(c[2]), intrinsics);
    EXPECT_EQ(std::vector<double>({double(p.x), double(p.y), double(p.z)}),
              std::vector<double>(c.begin() + 8, c.end()));
    // A whole image, converted the fast way, gives every pixel the rule's point.
    const std::vector<uint16_t> image(12, uint16_t(c[0]));
    std::vector<int16_t> points(36);
    DepthImageToPointCloud(image.data(), intrinsics, points.data());
    for (int i = 0; i < 12; ++i) {
      const Point16 q = DepthToPoint(image[i], i % 4, i / 4, intrinsics);
      EXPECT_EQ(std::vector<int16_t>(&points[3 * i], &points[3 * i + 3]),
                std::vector<int16_t>({q.x, q.y, q.z})) << "pixel " << i;
    }
  }
}

// A 2 x 2 recording of two depth frames and a mask track; each row replaces a file or directory
// (no contents: removes it). Messages follow "DIR/NAME: " unless they start with ':' or '/'.
TEST(Recording, LoadNamesTheFileAndWhatIsWrongWithIt) {
  const std::string dir = "/tmp/zelto_recording_" + std::to_string(getpid());
  const auto png = [&dir](int bits, uint32_t width, uint32_t height) {
    const std::vector<uint16_t> samples(width * height, 1000);
    EXPECT_TRUE(WriteGrayPng(dir + ".png", width, height, bits, samples.data()).ok());
    return std::string(std::istreambuf_iterator<char>(std::ifstream(dir + ".png").rdbuf()), {});
  };
  const std::string camera = R"({"width": 2, "height": 2, "fx": 2, "fy": 2, "cx": 1, "cy": 1)";
  const std::string depth = png(16, 2, 2), mask = png(8, 3, 1);
  const std::map<std::string, std::string> valid = {{"intrinsics.json", camera + "}"},
      {"depth/0.png", depth}, {"depth/1.png", depth}, {"masks/a/0.png", mask},
      {"masks/a/1.png", mask}, {"masks/a/mask.json", R"({"source": "color"})"}};
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {"intrinsics.json", "", "missing"},
      {"intrinsics.json", R"({"width": 2})", "\"height\" is missing"},
      {"intrinsics.json", camera + R"(, "fx": 0})", "\"fx\" must be a positive number"},
      {"timestamps.txt", "1\n-5\n", "line 2: \"-5\" is not a nanosecond count"},
      {"depth/1.png", png(16, 3, 1), "3 x 1 pixels, intrinsics.json says 2 x 2"},
      {"depth", "", ": no frames (expected depth/*.png or pointcloud/*.bin)"},
      {"pointcloud/0.bin", "xyz", ": both depth/ and pointcloud/ hold frames; keep one"},
      {"calibration.json", R"({"R": {"j": 1}})", "unknown key \"R.j\""},
      {"masks/a/1.png", "", "/masks/a: 1 mask images for 2 frames"},
      {"masks/a/1.png", png(8, 1, 3), "1 x 3 pixels, the first mask of the track is 3 x 1"},
  };
  for (const auto& [name, contents, message] : cases) {
    SCOPED_TRACE(name + ": " + message);
    std::filesystem::remove_all(dir);
    for (const auto& [file, bytes] : valid) {
      std::filesystem::create_directories(std::filesystem::path(dir + "/" + file).parent_path());
      std::ofstream(dir + "/" + file, std::ios::binary) << bytes;
    }
    std::filesystem::remove_all(dir + "/" + name);
    std::filesystem::create_directories(std::filesystem::path(dir + "/" + name).parent_path());
    if (!contents.empty()) std::ofstream(dir + "/" + name, std::ios::binary) << contents;
    Recording recording;
    EXPECT_EQ(LoadRecording(dir, &recording).message(),
              dir + (std::strchr(":/", message[0]) ? message : "/" + name + ": " + message));
  }
  std::filesystem::remove_all(dir);
  std::filesystem::remove(dir + ".png");
}

}  // namespace
}  // namespace ZeltoSim
