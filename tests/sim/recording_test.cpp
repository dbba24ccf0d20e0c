// LoadRecording, the frame and mask readers, and each error with its text.
#include "zelto_sim/recording.h"

#include <gtest/gtest.h>

#include "sim/sim_test_files.h"
#include "zelto_sim/png_io.h"

namespace {

using ZeltoSim::LoadRecording;
using ZeltoSim::Recording;
using ZeltoSimTest::MakeDepthRecording;
using ZeltoSimTest::TempDirectory;
using ZeltoSimTest::WriteBytes;
using ZeltoSimTest::WritePng16;
using ZeltoSimTest::WritePng8;
using ZeltoSimTest::WriteText;

const std::string kRedwood = std::string(ZELTO_EXAMPLES_DIR) + "/redwood";

// The message of a failed load, or "OK".
std::string LoadError(const std::string& dir, Recording* recording) {
  const weftcore::Status status = LoadRecording(dir, recording);
  if (status.ok()) return "OK";
  EXPECT_EQ(status.block(), "ZeltoSim");
  return status.message();
}

std::string LoadError(const std::string& dir) {
  Recording recording;
  return LoadError(dir, &recording);
}

TEST(Recording, RedwoodLoads) {
  Recording recording;
  ASSERT_EQ(LoadError(kRedwood, &recording), "OK");
  EXPECT_EQ(recording.format, ZeltoSim::FrameFormat::kDepthPng);
  ASSERT_EQ(recording.frameFiles.size(), 5u);
  EXPECT_EQ(recording.frameFiles[0], kRedwood + "/depth/00000.png");
  EXPECT_EQ(recording.frameFiles[4], kRedwood + "/depth/00004.png");
  EXPECT_EQ(recording.intrinsics.width, 640);
  EXPECT_EQ(recording.intrinsics.height, 480);
  EXPECT_EQ(recording.intrinsics.fx, 525.0);
  EXPECT_EQ(recording.intrinsics.fy, 525.0);
  EXPECT_EQ(recording.intrinsics.cx, 319.5);
  EXPECT_EQ(recording.intrinsics.cy, 239.5);
  EXPECT_EQ(recording.intrinsics.depthScale, 1000.0);
  EXPECT_EQ(recording.timestamps,
            (std::vector<uint64_t>{0, 33333333, 66666666, 99999999, 133333332}));
  EXPECT_TRUE(recording.masks.empty());
  EXPECT_FALSE(recording.hasCalibrationFile);
  // The identity calibration: colour camera = depth camera.
  EXPECT_EQ(recording.calibration.colorWidth, 640);
  EXPECT_EQ(recording.calibration.depthHeight, 480);
  EXPECT_FALSE(recording.calibration.isCalibrated);
  EXPECT_EQ(recording.calibration.c.fx, 525.0f);
  EXPECT_EQ(recording.calibration.d.cx, 319.5f);
  EXPECT_EQ(recording.calibration.R.a, 1.0f);
  EXPECT_EQ(recording.calibration.R.b, 0.0f);
  EXPECT_EQ(recording.calibration.R.e, 1.0f);
  EXPECT_EQ(recording.calibration.R.i, 1.0f);
}

// Reference values decoded from 00000.png independently of libspng (Python
// zlib and the PNG filters), so a byte-order slip would show.
TEST(Recording, RedwoodFrameZeroPointCloud) {
  Recording recording;
  ASSERT_EQ(LoadError(kRedwood, &recording), "OK");
  std::vector<int16_t> points;
  ASSERT_TRUE(ZeltoSim::ReadPointCloudFrame(recording, 0, &points).ok());
  ASSERT_EQ(points.size(), 640u * 480u * 3u);
  auto at = [&points](int u, int v, int c) { return points[(v * 640 + u) * 3 + c]; };
  // (320, 240): 2195 mm; x = round(0.5 * 2195 / 525) = round(2.09) = 2.
  EXPECT_EQ(at(320, 240, 0), 2);
  EXPECT_EQ(at(320, 240, 1), 2);
  EXPECT_EQ(at(320, 240, 2), 2195);
  // (200, 100): 1682 mm; x = round(-119.5 * 1682 / 525) = round(-382.855) = -383,
  // y = round(-139.5 * 1682 / 525) = round(-446.93) = -447.
  EXPECT_EQ(at(200, 100, 0), -383);
  EXPECT_EQ(at(200, 100, 1), -447);
  EXPECT_EQ(at(200, 100, 2), 1682);
  // (500, 300): 2007 mm; x = round(180.5 * 2007 / 525) = round(690.02) = 690,
  // y = round(60.5 * 2007 / 525) = round(231.28) = 231.
  EXPECT_EQ(at(500, 300, 0), 690);
  EXPECT_EQ(at(500, 300, 1), 231);
  EXPECT_EQ(at(500, 300, 2), 2007);
  EXPECT_EQ(at(0, 0, 2), 0);
  int64_t nonZero = 0, sum = 0, maximum = 0;
  for (size_t i = 2; i < points.size(); i += 3) {
    nonZero += points[i] != 0;
    sum += points[i];
    maximum = std::max<int64_t>(maximum, points[i]);
  }
  EXPECT_EQ(nonZero, 267129);
  EXPECT_EQ(sum, 479199333);
  EXPECT_EQ(maximum, 2702);
}

TEST(Recording, FrameIndexOutOfRange) {
  Recording recording;
  ASSERT_EQ(LoadError(kRedwood, &recording), "OK");
  std::vector<int16_t> points;
  EXPECT_EQ(ZeltoSim::ReadPointCloudFrame(recording, 5, &points).message(),
            kRedwood + ": no frame 5 (5 frames)");
}

TEST(Recording, DepthScaleAppliesToPngFrames) {
  TempDirectory dir;
  WriteText(dir.path() + "/intrinsics.json", ZeltoSimTest::IntrinsicsJson(2, 1, 5000));
  WritePng16(dir.path() + "/depth/a.png", 2, 1, {12345, 0xFFFF});
  Recording recording;
  ASSERT_EQ(LoadError(dir.path(), &recording), "OK");
  EXPECT_EQ(recording.intrinsics.depthScale, 5000.0);
  std::vector<int16_t> points;
  ASSERT_TRUE(ZeltoSim::ReadPointCloudFrame(recording, 0, &points).ok());
  // z = round(12345 / 5) = 2469, x = round((0 - 1) * 2469 / 2) = round(-1234.5) = -1235;
  // z = round(65535 / 5) = 13107, x = 0, y = round((0 - 1) * 13107 / 2) = -6554.
  EXPECT_EQ(points, (std::vector<int16_t>{-1235, -1235, 2469, 0, -6554, 13107}));
}

TEST(Recording, DepthScaleDefaultsToMillimetres) {
  TempDirectory dir;
  WriteText(dir.path() + "/intrinsics.json", ZeltoSimTest::IntrinsicsJson(1, 1, 0));
  WritePng16(dir.path() + "/depth/a.png", 1, 1, {777});
  Recording recording;
  ASSERT_EQ(LoadError(dir.path(), &recording), "OK");
  EXPECT_EQ(recording.intrinsics.depthScale, 1000.0);
}

TEST(Recording, PngFramesAreSortedByName) {
  TempDirectory dir;
  WriteText(dir.path() + "/intrinsics.json", ZeltoSimTest::IntrinsicsJson(1, 1, 1000));
  WritePng16(dir.path() + "/depth/b.png", 1, 1, {2});
  WritePng16(dir.path() + "/depth/a.png", 1, 1, {1});
  WritePng16(dir.path() + "/depth/c.png", 1, 1, {3});
  WriteText(dir.path() + "/depth/notes.txt", "ignored");
  Recording recording;
  ASSERT_EQ(LoadError(dir.path(), &recording), "OK");
  ASSERT_EQ(recording.frameFiles.size(), 3u);
  std::vector<int16_t> points;
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(ZeltoSim::ReadPointCloudFrame(recording, i, &points).ok());
    EXPECT_EQ(points[2], i + 1);
  }
}

TEST(Recording, PointCloudFilesAreLittleEndianInt16) {
  TempDirectory dir;
  WriteText(dir.path() + "/intrinsics.json", ZeltoSimTest::IntrinsicsJson(2, 1, 0));
  // (-2, 300, 1000) and (32767, -32768, 0)
  WriteBytes(dir.path() + "/pointcloud/0.bin",
             {0xFE, 0xFF, 0x2C, 0x01, 0xE8, 0x03, 0xFF, 0x7F, 0x00, 0x80, 0x00, 0x00});
  Recording recording;
  ASSERT_EQ(LoadError(dir.path(), &recording), "OK");
  EXPECT_EQ(recording.format, ZeltoSim::FrameFormat::kPointCloud);
  std::vector<int16_t> points;
  ASSERT_TRUE(ZeltoSim::ReadPointCloudFrame(recording, 0, &points).ok());
  EXPECT_EQ(points, (std::vector<int16_t>{-2, 300, 1000, 32767, -32768, 0}));
}

TEST(Recording, ExplicitTimestamps) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 3);
  WriteText(dir.path() + "/timestamps.txt", "1000\n  2000 \n\n18446744073709551615\n");
  Recording recording;
  ASSERT_EQ(LoadError(dir.path(), &recording), "OK");
  EXPECT_EQ(recording.timestamps, (std::vector<uint64_t>{1000, 2000, 18446744073709551615ull}));
}

TEST(Recording, TimestampCountMustMatchFrames) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 3);
  WriteText(dir.path() + "/timestamps.txt", "1000\n2000\n");
  EXPECT_EQ(LoadError(dir.path()), dir.path() + "/timestamps.txt: 2 timestamps for 3 frames");
}

TEST(Recording, TimestampMustBeANumber) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 3);
  WriteText(dir.path() + "/timestamps.txt", "1000\n20x0\n3000\n");
  EXPECT_EQ(LoadError(dir.path()),
            dir.path() + "/timestamps.txt: line 2: \"20x0\" is not a nanosecond count");
  WriteText(dir.path() + "/timestamps.txt", "1000\n-5\n3000\n");
  EXPECT_EQ(LoadError(dir.path()),
            dir.path() + "/timestamps.txt: line 2: \"-5\" is not a nanosecond count");
}

TEST(Recording, NotADirectory) {
  EXPECT_EQ(LoadError("/nonexistent/zelto"), "/nonexistent/zelto: not a directory");
  Recording recording;
  EXPECT_EQ(LoadRecording("/nonexistent/zelto", &recording).cause(), weftcore::kCauseNotFound);
}

TEST(Recording, MissingIntrinsics) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 1);
  std::remove((dir.path() + "/intrinsics.json").c_str());
  EXPECT_EQ(LoadError(dir.path()), dir.path() + "/intrinsics.json: missing");
}

TEST(Recording, IntrinsicsNotJson) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 1);
  WriteText(dir.path() + "/intrinsics.json", "{\"width\": 2,");
  Recording recording;
  const weftcore::Status status = LoadRecording(dir.path(), &recording);
  EXPECT_EQ(status.cause(), weftcore::kCauseInvalidArgument);
  EXPECT_EQ(status.message(),
            dir.path() +
                "/intrinsics.json: invalid JSON: [json.exception.parse_error.101] parse error at "
                "line 1, column 13: syntax error while parsing object key - unexpected "
                "end of input; expected string literal");
}

TEST(Recording, IntrinsicsNotAnObject) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 1);
  WriteText(dir.path() + "/intrinsics.json", "[1, 2]");
  EXPECT_EQ(LoadError(dir.path()), dir.path() + "/intrinsics.json: expected a JSON object");
}

TEST(Recording, IntrinsicsFieldErrors) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 1);
  const std::string path = dir.path() + "/intrinsics.json";
  WriteText(path, "{\"width\": 2, \"height\": 2, \"fy\": 2, \"cx\": 1, \"cy\": 1}");
  EXPECT_EQ(LoadError(dir.path()), path + ": \"fx\" is missing");
  WriteText(path, "{\"width\": 2, \"height\": 2, \"fx\": -2, \"fy\": 2, \"cx\": 1, \"cy\": 1}");
  EXPECT_EQ(LoadError(dir.path()), path + ": \"fx\" must be a positive number");
  WriteText(path, "{\"width\": \"2\", \"height\": 2, \"fx\": 2, \"fy\": 2, \"cx\": 1, \"cy\": 1}");
  EXPECT_EQ(LoadError(dir.path()), path + ": \"width\" must be a 32-bit integer");
  WriteText(path, "{\"width\": 0, \"height\": 2, \"fx\": 2, \"fy\": 2, \"cx\": 1, \"cy\": 1}");
  EXPECT_EQ(LoadError(dir.path()), path + ": \"width\" must be a positive integer");
  WriteText(path, "{\"width\": 2, \"height\": 2, \"fx\": 2, \"fy\": 2, \"cx\": \"a\", \"cy\": 1}");
  EXPECT_EQ(LoadError(dir.path()), path + ": \"cx\" must be a number");
  WriteText(path,
            "{\"width\": 2, \"height\": 2, \"fx\": 2, \"fy\": 2, \"cx\": 1, \"cy\": 1, "
            "\"depth_scale\": 0}");
  EXPECT_EQ(LoadError(dir.path()), path + ": \"depth_scale\" must be a positive number");
}

TEST(Recording, DepthPngMustBe16BitGrayscale) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 2);
  const std::string png = dir.path() + "/depth/00001.png";
  WritePng8(png, 2, 2, {1, 2, 3, 4});
  EXPECT_EQ(LoadError(dir.path()), png + ": 8-bit grayscale PNG, expected 16-bit grayscale");
}

TEST(Recording, DepthPngMustMatchIntrinsicsSize) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 2);
  const std::string png = dir.path() + "/depth/00000.png";
  WritePng16(png, 3, 1, {1, 2, 3});
  EXPECT_EQ(LoadError(dir.path()), png + ": 3 x 1 pixels, intrinsics.json says 2 x 2");
}

TEST(Recording, DepthPngThatIsNotAPngOrTruncated) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 1);
  const std::string png = dir.path() + "/depth/00000.png";
  WriteText(png, std::string(64, 'x'));
  EXPECT_EQ(LoadError(dir.path()), png + ": not a readable PNG (invalid signature)");
  WriteBytes(png, {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0, 13});
  EXPECT_EQ(LoadError(dir.path()), png + ": not a readable PNG (end of stream)");
}

TEST(Recording, PointCloudFileOfTheWrongSize) {
  TempDirectory dir;
  WriteText(dir.path() + "/intrinsics.json", ZeltoSimTest::IntrinsicsJson(4, 3, 0));
  const std::string bin = dir.path() + "/pointcloud/0.bin";
  WriteBytes(bin, std::vector<uint8_t>(10));
  EXPECT_EQ(LoadError(dir.path()), bin + ": 10 bytes, expected 72 (4 x 3 x 6)");
}

TEST(Recording, NoFrames) {
  TempDirectory dir;
  WriteText(dir.path() + "/intrinsics.json", ZeltoSimTest::IntrinsicsJson(2, 2, 0));
  EXPECT_EQ(LoadError(dir.path()),
            dir.path() + ": no frames (expected depth/*.png or pointcloud/*.bin)");
}

TEST(Recording, BothFrameKinds) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 1, 1, 1);
  WriteBytes(dir.path() + "/pointcloud/0.bin", std::vector<uint8_t>(6));
  EXPECT_EQ(LoadError(dir.path()),
            dir.path() + ": both depth/ and pointcloud/ hold frames; keep one");
}

TEST(Recording, CalibrationFile) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 1);
  WriteText(dir.path() + "/calibration.json",
            R"({"colorWidth": 256, "colorHeight": 192, "isCalibrated": true,
                "c": {"fx": 200.5, "cy": 96}, "R": {"b": -0.25, "i": 0.5}, "T": {"x": 25}})");
  Recording recording;
  ASSERT_EQ(LoadError(dir.path(), &recording), "OK");
  EXPECT_TRUE(recording.hasCalibrationFile);
  const auto& calibration = recording.calibration;
  EXPECT_EQ(calibration.colorWidth, 256);
  EXPECT_EQ(calibration.colorHeight, 192);
  EXPECT_EQ(calibration.depthWidth, 2);  // from the identity default
  EXPECT_TRUE(calibration.isCalibrated);
  EXPECT_EQ(calibration.c.fx, 200.5f);
  EXPECT_EQ(calibration.c.fy, 2.0f);  // the depth camera's, by default
  EXPECT_EQ(calibration.c.cy, 96.0f);
  EXPECT_EQ(calibration.R.a, 1.0f);
  EXPECT_EQ(calibration.R.b, -0.25f);
  EXPECT_EQ(calibration.R.i, 0.5f);
  EXPECT_EQ(calibration.T.x, 25.0f);
  EXPECT_EQ(calibration.T.y, 0.0f);
}

TEST(Recording, CalibrationFileErrors) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 1);
  const std::string path = dir.path() + "/calibration.json";
  WriteText(path, R"({"colourWidth": 256})");
  EXPECT_EQ(LoadError(dir.path()), path + ": unknown key \"colourWidth\"");
  WriteText(path, R"({"c": {"fx": "wide"}})");
  EXPECT_EQ(LoadError(dir.path()), path + ": \"c.fx\" must be a number");
  WriteText(path, R"({"R": {"j": 1}})");
  EXPECT_EQ(LoadError(dir.path()), path + ": unknown key \"R.j\"");
  WriteText(path, R"({"T": 5})");
  EXPECT_EQ(LoadError(dir.path()), path + ": \"T\" must be an object");
  WriteText(path, R"({"isCalibrated": 1})");
  EXPECT_EQ(LoadError(dir.path()), path + ": \"isCalibrated\" must be true or false");
  WriteText(path, R"({"depthWidth": 1.5})");
  EXPECT_EQ(LoadError(dir.path()), path + ": \"depthWidth\" must be a 32-bit integer");
}

TEST(Recording, MaskTracks) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 2);
  WriteText(dir.path() + "/masks/person/mask.json", R"({"source": "color"})");
  WritePng8(dir.path() + "/masks/person/0.png", 3, 1, {0, 255, 7});
  WritePng8(dir.path() + "/masks/person/1.png", 3, 1, {9, 8, 7});
  WriteText(dir.path() + "/masks/floor/mask.json", R"({"source": "depth"})");
  WritePng8(dir.path() + "/masks/floor/a.png", 1, 1, {1});
  WritePng8(dir.path() + "/masks/floor/b.png", 1, 1, {2});
  Recording recording;
  ASSERT_EQ(LoadError(dir.path(), &recording), "OK");
  ASSERT_EQ(recording.masks.size(), 2u);
  const ZeltoSim::MaskTrack& floor = recording.masks[0];
  const ZeltoSim::MaskTrack& person = recording.masks[1];
  EXPECT_EQ(floor.name, "floor");
  EXPECT_FALSE(floor.isColorSource);
  EXPECT_EQ(person.name, "person");
  EXPECT_TRUE(person.isColorSource);
  EXPECT_EQ(person.width, 3u);
  EXPECT_EQ(person.height, 1u);
  std::vector<uint8_t> bytes;
  ASSERT_TRUE(ZeltoSim::ReadMaskFrame(person, 0, &bytes).ok());
  EXPECT_EQ(bytes, (std::vector<uint8_t>{0, 255, 7}));
  ASSERT_TRUE(ZeltoSim::ReadMaskFrame(person, 1, &bytes).ok());
  EXPECT_EQ(bytes, (std::vector<uint8_t>{9, 8, 7}));
  ASSERT_TRUE(ZeltoSim::ReadMaskFrame(floor, 1, &bytes).ok());
  EXPECT_EQ(bytes, (std::vector<uint8_t>{2}));
  EXPECT_EQ(ZeltoSim::ReadMaskFrame(floor, 2, &bytes).message(),
            "mask \"floor\": no image 2 (2 images)");
}

TEST(Recording, MaskTrackErrors) {
  TempDirectory dir;
  MakeDepthRecording(dir.path(), 2, 2, 2);
  const std::string track = dir.path() + "/masks/person";
  WritePng8(track + "/0.png", 3, 1, {0, 255, 7});
  EXPECT_EQ(LoadError(dir.path()), track + "/mask.json: missing");
  WriteText(track + "/mask.json", R"({"source": "infrared"})");
  EXPECT_EQ(LoadError(dir.path()),
            track + "/mask.json: \"source\" must be \"color\" or \"depth\", not \"infrared\"");
  WriteText(track + "/mask.json", R"({"kind": "color"})");
  EXPECT_EQ(LoadError(dir.path()), track + "/mask.json: \"source\" is missing");
  WriteText(track + "/mask.json", R"({"source": "color"})");
  EXPECT_EQ(LoadError(dir.path()), track + ": 1 mask images for 2 frames");
  WritePng16(track + "/1.png", 3, 1, {0, 1, 2});
  EXPECT_EQ(LoadError(dir.path()),
            track + "/1.png: 16-bit grayscale PNG, expected 8-bit grayscale");
  WritePng8(track + "/1.png", 1, 3, {0, 1, 2});
  EXPECT_EQ(LoadError(dir.path()),
            track + "/1.png: 1 x 3 pixels, the first mask of the track is 3 x 1");
}

TEST(PngIo, SixteenBitSamplesSurviveARoundTrip) {
  TempDirectory dir;
  const std::string path = dir.path() + "/x.png";
  const std::vector<uint16_t> samples{0x1234, 0xFF00, 0x00FF, 1};
  WritePng16(path, 2, 2, samples);
  ZeltoSim::PngInfo info;
  std::vector<uint16_t> read;
  ASSERT_TRUE(ZeltoSim::ReadGray16Png(path, &info, &read).ok());
  EXPECT_EQ(info.width, 2u);
  EXPECT_EQ(info.height, 2u);
  EXPECT_EQ(info.bitDepth, 16);
  EXPECT_EQ(read, samples);
}

TEST(PngIo, MissingFile) {
  ZeltoSim::PngInfo info;
  const weftcore::Status status = ZeltoSim::ReadPngInfo("/nonexistent/x.png", &info);
  EXPECT_EQ(status.cause(), weftcore::kCauseNotFound);
  EXPECT_EQ(status.message(), "/nonexistent/x.png: cannot open: No such file or directory");
}

}  // namespace
