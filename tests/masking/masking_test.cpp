// The masking arithmetic as exact tables, its refusals, a plain per-point model checked against Apply
// on a real depth frame, and Apply's heap use (this program replaces operator new to count it).
#include <gtest/gtest.h>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <random>
#include <tuple>

#include "masking/mask_fit.h"
#include "masking/truncate_to_int32.h"
#include "masking_fixtures.h"
#include "mesh/mesh_harness.h"
#include "support/log_capture.h"
#include "support/redwood_checksums.h"
#include "support/redwood_frame.h"

namespace {
std::atomic<int> allocations{0};
std::atomic<bool> failNext{false};
void* Allocate(std::size_t size) {
  ++allocations;
  void* p = failNext.exchange(false) ? nullptr : std::malloc(size == 0 ? 1 : size);
  return p != nullptr ? p : throw std::bad_alloc();
}
}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {
using namespace masking_test;
using Pixel = std::pair<float, float>;
constexpr float kInf = std::numeric_limits<float>::infinity(), kNan = std::numeric_limits<float>::quiet_NaN();
const Pixel kOut{-1.0f, -1.0f};

// Exact text of floats: hex digits, any NaN as "nan", -0 as 0.
std::string Exact(const float* values, size_t count) {
  std::string text;
  for (const float* v = values; v < values + count; ++v) text += std::isnan(*v) ? "nan " : zelto_test::Printf("%a ", *v + 0.0);
  return text;
}
std::string Exact(Pixel p) { return Exact(&p.first, 1) + Exact(&p.second, 1); }

// kHugeDepth has scale 1 on a 65536-wide depth image: row 65536 starts at byte 2^32.
enum Camera { kStandard, kUncalibrated, kHugeDepth };

MaskedPointCloud CloudWith(Camera camera) {
  MaskedPointCloud cloud;
  Calibration k = kStandardCalibration;
  if (camera == kHugeDepth) k = {640, 480, 65536, 65537, true, k.c, {1, 1, 0, 40000}, k.R, {}};
  if (camera != kUncalibrated) ReadCalibration(&cloud, k);
  return cloud;
}

TEST(TruncateToInt32, TruncatesTowardZeroSaturatesAndTurnsNanIntoZero) {
  constexpr int32_t kMax = std::numeric_limits<int32_t>::max(), kMin = -kMax - 1;
  const struct Case { float value; int32_t expected; } cases[] = {
      {kInf, kMax}, {-kInf, kMin}, {kNan, 0}, {-kNan, 0}, {2147483520.0f, 2147483520},
      {2147483648.0f, kMax}, {-2147483648.0f, kMin}, {-2147483904.0f, kMin}, {-0.5f, 0},
      {-1.0f, -1}, {1.9f, 1}, {-1.9f, -1}, {639.5f, 639}};
  for (const Case& row : cases) {
    SCOPED_TRACE(zelto_test::Printf("%a", double{row.value}));
    EXPECT_EQ(Zelto::TruncateToInt32(row.value), row.expected);
    const Zelto::IntLanes lanes = Zelto::TruncateToInt32(Zelto::FloatLanes{row.value, 1.5f, -kInf, row.value});
    EXPECT_EQ(std::make_tuple(lanes[0], lanes[1], lanes[2], lanes[3]), std::make_tuple(row.expected, 1, kMin, row.expected));
  }
}

TEST(MaskedPointCloud, InvertsTheRotationOfEveryCalibrationRead) {
  const struct Case { const char* name; ZeltoTof::Matrix_ r; bool refused; float inverse[9]; } cases[] = {
      {"scale, sheared row", {2, 0, 0, 0, 4, 0, 1, 0, 1}, false, {0.5f, 0, 0, 0, 0.25f, 0, -0.5f, 0, 1}},
      {"negative entries", {1, 2, 0, 0, 1, 0, 0, 3, 1}, false, {1, -2, 0, 0, 1, 0, 0, -3, 1}},
      {"90 degrees about z", {0, -1, 0, 1, 0, 0, 0, 0, 1}, false, {0, 1, 0, -1, 0, 0, 0, 0, 1}},
      {"uncalibrated zero matrix", {}, false, {kNan, kNan, kNan, kNan, kNan, kNan, kNan, kNan, kNan}},
      {"refused read keeps the last", {1, 2, 0, 0, 1, 0, 0, 3, 1}, true, {1, 0, 0, 0, 1, 0, 0, 0, 1}}};
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    MaskedPointCloud cloud = CloudWith(kStandard);  // has read the identity
    Calibration calibration = kStandardCalibration;
    calibration.R = row.r;
    ReadCalibration(&cloud, calibration, row.refused);
    EXPECT_EQ(Exact(cloud.inverseRotation, 9), Exact(row.inverse, 9));
  }
}

TEST(MaskedPointCloud, MapsPointsToWholeColourPixelsAndSubPixelDepthPositions) {
  const struct Case { const char* name; bool calibrated; Zelto::ZeltoVector3_ p; Pixel color, depth; } cases[] = {
      {"colour width - 0.5: last column", true, {639, 0, 1000}, {639, 240}, {319.75f, 120}},
      {"width itself: outside both", true, {640, 0, 1000}, kOut, kOut},
      {"colour height - 0.5: last row", true, {0, 479, 1000}, {320, 479}, {160, 239.75f}},
      {"height itself: outside both", true, {0, 480, 1000}, kOut, kOut},
      {"colour -0.5 is row 0, depth -0.25 outside", true, {0, -481, 1000}, {320, 0}, kOut},
      {"colour -1: outside", true, {0, -482, 1000}, kOut, kOut},
      {"(x f) / z, not x (f / z)", true, {-187, 34, 374}, {70, 285}, {35, 0x1.1d745cp+7f}},
      {"(0, 0, 0): NaN converts to 0", true, {0, 0, 0}, {0, 0}, {kNan, kNan}},
      {"inf from depth 0: outside", true, {5, 0, 0}, kOut, kOut},
      {"uncalibrated maps nothing", false, {100, -50, 1000}, kOut, kOut},
      {"... not even (0, 0, 0)", false, {0, 0, 0}, kOut, kOut}};
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    const MaskedPointCloud cloud = CloudWith(row.calibrated ? kStandard : kUncalibrated);
    EXPECT_EQ(Exact(cloud.CameraToColor(row.p)), Exact(row.color));
    EXPECT_EQ(Exact(cloud.CameraToDepth(row.p)), Exact(row.depth));
  }
}

TEST(MaskFit, FitsByTheLargerRatioAndCentresOn640x480) {
  const struct Case { uint32_t width, height; float fit[3]; } cases[] = {  // scale, offsetX, offsetY
      {192, 256, {0x1.111112p-1f, 0x1.2aaaacp+6f, 0}}, {320, 120, {0.5f, 0, 60}}, {640, 480, {1, 0, 0}},
      {84, 63, {63.0f / 480.0f, 0, 0}} /* a tie takes the height ratio */, {64, 0, {0x1.99999ap-4f, 0, 24}}};
  for (const Case& row : cases) {
    SCOPED_TRACE(testing::Message() << row.width << " x " << row.height);
    const Zelto::MaskFit fit = Zelto::FitMaskToReference(row.width, row.height, 640.0f, 480.0f);
    const float actual[3] = {fit.scale, fit.offsetX, fit.offsetY};
    EXPECT_EQ(Exact(actual, 3), Exact(row.fit, 3));
  }
}

TEST(Apply, MasksAPointWhereItsMaskByteSaysSo) {
  const struct Case { const char* name; Camera camera; std::vector<Mask> masks; Point p; int16_t z; } cases[] = {  // at the default threshold, 55
      {"byte u + width v above the threshold", kStandard, {Color(640, 480).Set(100 + 640 * 50, 56)}, AtColorPixel(100, 50), kMasked},
      {"192 x 256: byte 138 + 192 x 53", kStandard, {Color(192, 256).Set(138 + 192 * 53, 255)}, AtColorPixel(400, 100), kMasked},
      {"... not its neighbours", kStandard,
       {Color(192, 256).Set(137 + 192 * 53, 255).Set(139 + 192 * 53, 255).Set(138 + 192 * 52, 255)}, AtColorPixel(400, 100), 1000},
      {"depth mask through the depth mapping", kStandard, {Depth(320, 240).Set(50 + 320 * 25, 200)}, AtColorPixel(100, 50), kMasked},
      {"byte at the threshold leaves", kStandard, {Color(640, 480, 55)}, AtColorPixel(10, 20), 1000},
      {"inverted: at the threshold removes", kStandard, {Color(640, 480, 55).Inverted()}, AtColorPixel(10, 20), kMasked},
      {"inverted: above it leaves", kStandard, {Color(640, 480, 56).Inverted()}, AtColorPixel(10, 20), 1000},
      {"one mask of two removes", kStandard, {Color(640, 480), Depth(320, 240, 255)}, AtColorPixel(10, 20), kMasked},
      {"height 0: upper half is negative rows", kStandard, {Color(64, 0, 255, 64 * 64)}, AtColorPixel(320, 100), 1000},
      {"height 0: lower half bounded by bytes", kStandard, {Color(64, 0, 255, 64 * 64)}, AtColorPixel(320, 400), kMasked},
      {"row past the height inside the bytes", kStandard, {Color(640, 240, 0, 640 * 480).Set(100 + 640 * 280, 255)},
       AtColorPixel(100, 400), kMasked},
      {"index at the byte count", kStandard, {Color(640, 240, 255)}, AtColorPixel(100, 400), 1000},
      {"column past the width", kStandard, {Depth(100, 240, 255)}, AtColorPixel(500, 100), 1000},
      {"(0, 0, 0) reads depth byte 0", kStandard, {Depth(320, 240).Set(0, 255)}, {0, 0, 0}, kMasked},
      {"off-image at scale 0.5 reads byte 0", kStandard, {Color(320, 240).Set(0, 255)}, {2000, 0, 1000}, kMasked},
      {"off-image at scale 1 is skipped", kStandard, {Color(640, 480, 255)}, {2000, 0, 1000}, 1000},
      {"uncalibrated masks nothing", kUncalibrated, {Color(64, 48, 255), Depth(64, 48, 255)}, {100, -50, 1000}, 1000},
      {"32-bit index wraps to byte 5", kHugeDepth, {Depth(65536, 65537, 0, 16).Set(5, 255)}, {5, 25536, 1}, kMasked}};
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    MaskedPointCloud cloud = CloudWith(row.camera);
    Point point = row.p;
    weftcore::Channel::RawData raw{&point, sizeof point, "", 0};
    const MaskList list = ListOf(row.masks);
    ASSERT_TRUE(cloud.Apply(&raw, &list).ok());
    EXPECT_EQ(point.z, row.z);
  }
}

// The invalid-mask line is what segmentation users read in the log.
TEST(Apply, RefusesInvalidMasksAndMissingArgumentsBeforeTouchingAnyPoint) {
  const struct Case { const char* message; uint64_t address, size; uint32_t width;
                      bool noCloud = false, noList = false; int points = 2; } cases[] = {
      {"Invalid mask data mask name:person address:9abcdef0 size:4096 width:0 height timestamp:77", 0x123456789ABCDEF0u, 4096, 0},
      {"Invalid mask data mask name:person address:0 size:307200 width:640 height timestamp:77", 0, 307200, 640},
      {"Invalid mask data mask name:person address:ffffffff size:0 width:640 height timestamp:77", ~uint64_t{0}, 0, 640},
      {"point cloud is null.", 1, 1, 1, true}, {"Null pointer", 1, 1, 1, false, true},
      {"point cloud is null.", 1, 1, 1, false, false, 0} /* a size but no memory */,
      {"", 1, 1, 1, false, false, 0} /* and no mask to use it */};
  for (size_t i = 0; i < std::size(cases); ++i) {
    const Case& row = cases[i];
    MaskedPointCloud cloud = CloudWith(kStandard);
    Point points[2] = {AtColorPixel(10, 20), AtColorPixel(500, 400)};
    weftcore::Channel::RawData raw{row.points ? points : nullptr, sizeof points, "", 0};
    const std::vector<Mask> masks(i < 6, Color(640, 480, 255));  // rows 0 to 5: a mask removing both points
    MaskList list = ListOf(masks);
    if (i < 3) list.data.push_back({"person", row.address, row.size, row.width, 77, 999, true, false});  // then an invalid one
    const Status status = cloud.Apply(row.noCloud ? nullptr : &raw, row.noList ? nullptr : &list);
    EXPECT_EQ(status.message(), row.message) << i;
    EXPECT_EQ(zelto_test::Printf("%d %d %s", status.level(), status.cause(), status.block().c_str()),
              *row.message ? "1 2 ZeltoMesh" : "0 0 ");
    EXPECT_EQ(std::make_pair(points[0].z, points[1].z), std::make_pair(int16_t{1000}, int16_t{1000}));
  }
}

// Masking written out point by point: each mask fitted by its larger ratio,
// the two mappings by their plain formulas, every mask consulted in turn.
bool ModelRemoves(const MaskedPointCloud& cloud, const std::vector<Mask>& masks, const int16_t* xyz) {
  using Zelto::TruncateToInt32;  // exact by the table above
  const Calibration& k = cloud.calibration;
  const float x = xyz[0], y = xyz[1], z = xyz[2], *m = cloud.inverseRotation;
  const float qx = m[0] * x + m[1] * y + m[2] * z, qy = m[3] * x + m[4] * y + m[5] * z,
              qz = m[6] * x + m[7] * y + m[8] * z;
  const int32_t u = TruncateToInt32(k.c.cx + (qx * k.c.fx) / qz), v = TruncateToInt32(k.c.cy + (qy * k.c.fy) / qz);
  const Pixel color = u >= 0 && u < k.colorWidth && v >= 0 && v < k.colorHeight ? Pixel(u, v) : kOut;
  const Pixel d{(x * k.d.fx) / z + k.d.cx, (y * k.d.fy) / z + k.d.cy};
  const bool depthIn = !(d.first < 0 || d.second < 0) && TruncateToInt32(d.first) < k.depthWidth &&
                       TruncateToInt32(d.second) < k.depthHeight;
  for (const Mask& mask : masks) {
    const float w = mask.width, h = mask.height;
    const float refW = mask.color ? k.colorWidth : k.depthWidth, refH = mask.color ? k.colorHeight : k.depthHeight;
    const bool byWidth = w / refW > h / refH;
    const float scale = byWidth ? w / refW : h / refH;
    const float offX = byWidth ? 0 : (scale * refW - w) * 0.5f, offY = byWidth ? (scale * refH - h) * 0.5f : 0;
    const Pixel at = mask.color ? color : depthIn ? d : kOut;
    const int64_t col = TruncateToInt32(at.first * scale - offX), row = TruncateToInt32(at.second * scale - offY);
    const int64_t width = mask.width, index = col + width * row;
    if (col < 0 || row < 0 || col >= width || index >= int64_t(mask.bytes.size())) continue;
    if ((mask.bytes[index] > cloud.maskThreshold) != mask.inverted) return true;
  }
  return false;
}

TEST(Apply, AgreesWithAPlainModelOnARealFrame) {
  const ZeltoTest::PointCloudImage frame = ZeltoTest::LoadRedwoodFrame(0);
  MaskedPointCloud cloud;  // a larger colour image, its camera turned 3 degrees about (1, 2, 2)
  ReadCalibration(&cloud, {960, 720, frame.width, frame.height, true, {800, 790, 480.5f, 359.25f}, {525, 525, 319.5f, 239.5f},
                           {0.9987818f, -0.0345861f, 0.0351952f, 0.0351952f, 0.9992386f, -0.0168362f, -0.0345861f, 0.0180544f, 0.9992386f}, {}});
  cloud.maskThreshold = 200;
  // Noise, so that a pixel off anywhere changes the verdict; the last mask has bytes for half its rows.
  std::vector<Mask> masks = {Color(256, 192), Depth(320, 200).Inverted(), Depth(64, 48, 0, 64 * 24)};
  std::mt19937 random(7);
  for (Mask& mask : masks) for (uint8_t& byte : mask.bytes) byte = uint8_t(mask.inverted ? 190 + random() % 66 : random());
  const size_t count = frame.points.size() / 3;
  std::vector<uint8_t> bytes(6 * count + 5, 0xAB);  // five bytes that are no point
  std::memcpy(bytes.data(), frame.points.data(), 6 * count);
  std::vector<uint8_t> expected = bytes;
  size_t removed = 0;
  for (size_t i = 0; i < count; ++i) {
    if (ModelRemoves(cloud, masks, &frame.points[3 * i])) std::memcpy(&expected[6 * i + 4], &kMasked, sizeof kMasked), ++removed;
  }
  weftcore::Channel::RawData raw{bytes.data(), bytes.size(), "", 0};
  const MaskList list = ListOf(masks);
  ASSERT_TRUE(cloud.Apply(&raw, &list).ok());
  const auto firstDifference = std::mismatch(bytes.begin(), bytes.end(), expected.begin()).first;
  EXPECT_EQ(firstDifference - bytes.begin(), static_cast<ptrdiff_t>(bytes.size())) << "first differing byte";
  EXPECT_TRUE(removed > count / 5 && removed < count * 4 / 5) << removed;  // the masks cut through the frame
  // An arm64 device must blank the very points an x86-64 host does: these bytes were pinned on x86-64.
  EXPECT_EQ(ZeltoTest::Crc32(bytes.data(), bytes.size()), 0x69deb148u);
  // And the mesh built from them, flat layout, pinned on x86-64 as well.
  ZeltoTest::MeshHarness harness;
  harness.intrinsics = {525, 525, 319.5f, 239.5f};
  harness.flatRawData = true;
  const auto mesh = harness.Fill(reinterpret_cast<const int16_t*>(bytes.data()), frame.width, frame.height).flat;
  EXPECT_EQ(ZeltoTest::Crc32(mesh.data(), mesh.size()), 0x7d874689u);
}

// Apply takes points four at a time; the model takes them one by one, so every verdict must match on the values
// where lanes could differ: (0, 0, 0) and z = 0, the extremes of int16, positions on .5 and on the image and mask
// borders, a focal length that throws positions past int32, no calibration, and a last block of one point.
TEST(Apply, AgreesWithThePlainModelOnEdgeValues) {
  const int16_t xs[] = {-32768, -2000, -641, -482, -481, -187, -1, 0, 1, 34, 639, 640, 32767};
  const int16_t zs[] = {-1000, 0, 1, 374, 1000, 32767};
  std::vector<int16_t> xyz;
  for (int16_t x : xs) for (int16_t y : xs) for (int16_t z : zs) xyz.insert(xyz.end(), {x, y, z});
  xyz.insert(xyz.end(), {0, 0, 0});
  Calibration far = kStandardCalibration;
  far.c = {3e6f, 3e6f, 320, 240}, far.d = {3e6f, 3e6f, 160, 120}, far.R = {0.999f, 0.03f, 0, -0.03f, 0.999f, 0, 0, 0, 1};
  std::mt19937 random(11);
  std::vector<Mask> masks = {Color(256, 192), Depth(320, 240).Inverted(), Color(640, 240, 0, 640 * 480), Depth(100, 240)};
  for (Mask& mask : masks) for (uint8_t& byte : mask.bytes) byte = uint8_t(mask.inverted ? 40 + random() % 30 : random() % 62);
  const MaskList list = ListOf(masks);
  const Calibration* const calibrations[] = {&kStandardCalibration, &far, nullptr};
  for (const Calibration* calibration : calibrations) {
    SCOPED_TRACE(calibration == nullptr ? "uncalibrated" : calibration == &far ? "far focus" : "standard");
    MaskedPointCloud cloud;
    if (calibration != nullptr) ReadCalibration(&cloud, *calibration);
    std::vector<int16_t> points = xyz;
    points.insert(points.end(), {0, 0, 0});  // past the cloud: lanes beyond its last point must not be written
    weftcore::Channel::RawData raw{points.data(), xyz.size() * sizeof(int16_t), "", 0};
    ASSERT_TRUE(cloud.Apply(&raw, &list).ok());
    EXPECT_EQ(points.back(), 0);
    size_t removed = 0;
    for (size_t i = 0; i < xyz.size(); i += 3) {
      SCOPED_TRACE(zelto_test::Printf("point (%d, %d, %d)", xyz[i], xyz[i + 1], xyz[i + 2]));
      removed += points[i + 2] == kMasked;
      ASSERT_EQ(points[i + 2], ModelRemoves(cloud, masks, &xyz[i]) ? kMasked : xyz[i + 2]);
    }
    EXPECT_EQ(removed > 0, calibration != nullptr) << removed;
  }
}

TEST(Apply, AllocatesOnceWhateverThePointCountAndReportsExhaustedMemory) {
  MaskedPointCloud cloud = CloudWith(kStandard);
  const std::vector<Mask> masks = {Color(640, 480), Depth(320, 240), Depth(320, 240, 255)};
  const MaskList list = ListOf(masks);
  for (size_t count : {1, 10000}) {
    SCOPED_TRACE(count);
    std::vector<Point> points(count, AtColorPixel(10, 20));
    weftcore::Channel::RawData raw{points.data(), count * sizeof(Point), "", 0};
    allocations = 0;
    EXPECT_TRUE(cloud.Apply(&raw, &list).ok());
    EXPECT_EQ(allocations, 1);
    EXPECT_EQ(points.back().z, kMasked);
    points.assign(count, AtColorPixel(10, 20));
    failNext = true;
    const Status status = cloud.Apply(&raw, &list);
    EXPECT_EQ(status.cause(), 6);
    EXPECT_EQ(status.message().rfind("Out of memory for 3 masks: ", 0), 0u) << status.message();
    EXPECT_EQ(points.back().z, 1000);
  }
}

}  // namespace
