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
#include <random>

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

// The image conversion estimates in single precision and redoes only the
// pixels it is unsure of: on random cameras and depths every pixel must
// still be the rule's, the last pixels of a row (width 67) included.
TEST(Recording, ImageConversionIsTheRuleOnRandomCameras) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> focal(0.5, 2000), centre(-100, 400);
  std::vector<uint16_t> image(67 * 9);
  std::vector<int16_t> points(image.size() * 3);
  for (int camera = 0; camera < 200; ++camera) {
    const Intrinsics intrinsics{67, 9, focal(random), focal(random), centre(random),
                                centre(random), camera % 4 == 0 ? 5000.0 : 1000.0};
    for (uint16_t& sample : image) sample = uint16_t(random() % (camera % 3 == 0 ? 65536 : 12000));
    DepthImageToPointCloud(image.data(), intrinsics, points.data());
    for (size_t i = 0; i < image.size(); ++i) {
      const Point16 q = DepthToPoint(image[i], int32_t(i % 67), int32_t(i / 67), intrinsics);
      ASSERT_EQ(std::vector<int16_t>(&points[3 * i], &points[3 * i + 3]),
                std::vector<int16_t>({q.x, q.y, q.z})) << "camera " << camera << ", pixel " << i;
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
      {"timestamps.txt", "1\n-5\n",
       "line 2: \"-5\" is not a nanosecond count or seconds with a decimal point"},
      {"intrinsics.json", R"({"width": 2, "height": 2, "intrinsic_matrix": [2,0,1, 0,2,1, 0,0,1]})",
       "\"intrinsic_matrix\" must be column-major [fx, 0, 0, 0, fy, 0, cx, cy, 1]"},
      {"intrinsics.json", camera + R"(, "distortion_coefficients": [0.1, 0]})",
       "\"distortion_coefficients\": lens distortion is not supported; undistort the depth "
       "images first, or set the coefficients to 0"},
      {"intrinsics.json", camera + R"(, "near": 2, "far": 1})",
       "\"near\" must be less than \"far\""},
      {"depth/1.png", depth.substr(0, depth.size() - 13) + "x" + depth.substr(depth.size() - 12),
       "damaged PNG (bad CRC in the IDAT chunk at byte 33)"},
      {"depth/1.png", depth.substr(0, depth.size() - 12), "damaged PNG (truncated at byte 63)"},
      {"color/0.png", png(8, 2, 2), "/color: 1 colour images for 2 frames"},
      {"depth.txt", "# t f\n0.5 depth/0.png\nx depth/1.png\n",
       "line 3: expected \"seconds file\", e.g. \"1305031102.160407 depth/1.png\""},
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

// One depth value per frame, so that z tells which file a frame came from.
void WriteFrames(const std::string& dir, const std::map<std::string, uint16_t>& frames) {
  for (const auto& [name, value] : frames) {
    std::filesystem::create_directories(std::filesystem::path(dir + "/" + name).parent_path());
    const uint16_t samples[2] = {value, value};
    ASSERT_TRUE(WriteGrayPng(dir + "/" + name, 2, 1, 16, samples).ok());
  }
}

std::vector<int64_t> FrameDepths(const Recording& recording) {
  std::vector<int64_t> depths;
  for (size_t i = 0; i < recording.frameFiles.size(); ++i) {
    std::vector<int16_t> points;
    EXPECT_TRUE(ReadPointCloudFrame(recording, i, &points).ok());
    depths.push_back(points.at(2));
  }
  return depths;
}

// Folders in number order with a matrix camera; lists in their own order with 1/5 mm depth,
// colour by nearest time within 20 ms; times in seconds kept to the nanosecond.
TEST(Recording, LayoutsGiveFramesInOrderWithTheirTimesAndColours) {
  const std::string dir = "/tmp/zelto_layouts_" + std::to_string(getpid());
  std::filesystem::remove_all(dir);
  WriteFrames(dir + "/folders", {{"depth/10.png", 3000}, {"depth/2.png", 2000},
                                 {"depth/1.png", 900}, {"rgb/b10.png", 0}, {"rgb/b2.png", 0},
                                 {"rgb/b1.png", 0}});
  std::ofstream(dir + "/folders/camera.json")
      << R"({"width": 2, "height": 1, "intrinsic_matrix": [4, 0, 0, 0, 5, 0, 0.5, 0.25, 1],
            "near": 1, "far": 2.5, "distortion": [0, 0, 0, 0, 0]})";
  std::ofstream(dir + "/folders/timestamps.txt") << "0.5\n1.000000001\n18446744073.709551615\n";
  WriteFrames(dir + "/lists", {{"d/a.png", 5000}, {"d/b.png", 10000}, {"c/x.png", 0}});
  std::ofstream(dir + "/lists/intrinsics.json") << R"({"width": 2, "height": 1, "fx": 4, "fy": 4,
      "cx": 0, "cy": 0, "comment": "x"})";
  std::ofstream(dir + "/lists/depth.txt") << "# time file\n\n20.0 d/b.png\n10 d/a.png\n";
  std::ofstream(dir + "/lists/rgb.txt") << "9.95 c/x.png\n19.98 c/x.png\n20.02 c/x.png\n";
  Recording folders, lists;
  ASSERT_EQ(LoadRecording(dir + "/folders", &folders).message(), "");
  ASSERT_EQ(LoadRecording(dir + "/lists", &lists).message(), "");
  const Intrinsics& k = folders.intrinsics;
  EXPECT_EQ(std::vector<double>({k.fx, k.fy, k.cx, k.cy}),
            std::vector<double>({4, 5, 0.5, 0.25}));
  EXPECT_EQ(FrameDepths(folders), std::vector<int64_t>({0, 2000, 0}));  // 900 and 3000 mm clipped
  EXPECT_EQ(folders.timestamps,
            std::vector<uint64_t>({500000000, 1000000001, 18446744073709551615u}));
  EXPECT_EQ(folders.colorFiles.back(), dir + "/folders/rgb/b10.png");
  EXPECT_EQ(FrameDepths(lists), std::vector<int64_t>({2000, 1000}));
  EXPECT_EQ(lists.timestamps, std::vector<uint64_t>({20000000000, 10000000000}));
  EXPECT_EQ(lists.colorFiles, std::vector<std::string>({dir + "/lists/c/x.png", ""}));
  EXPECT_EQ(lists.warnings, std::vector<std::string>(
      {dir + "/lists/intrinsics.json: unknown key \"comment\" ignored",
       dir + "/lists/rgb.txt: no colour image within 20 ms of 1 of 2 depth frames"}));
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace ZeltoSim
