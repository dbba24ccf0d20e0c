// Shared test data of the masking suites: a calibration, point clouds and
// masks held in test memory.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "masking/masked_point_cloud.h"
#include "properties/zelto_segmentation_properties.h"
#include "properties/zelto_tof_properties.h"
#include "weftcore/frame.h"

namespace masking_test {

constexpr int16_t kInvalidDepth = 32001;

// Colour 640 x 480 (fx = fy = 500, centre 320, 240), depth 320 x 240 (fx =
// fy = 250, centre 160, 120), identity rotation: a point at z = 1000 with
// x = 2(u - 320), y = 2(v - 240) lands on colour pixel (u, v) and depth pixel
// (u / 2, v / 2), exactly.
inline ZeltoTof::ZeltoTofCalibrationSettingsProperty_ StandardCalibration() {
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ calibration;
  calibration.colorWidth = 640;
  calibration.colorHeight = 480;
  calibration.depthWidth = 320;
  calibration.depthHeight = 240;
  calibration.isCalibrated = true;
  calibration.c = {500.0f, 500.0f, 320.0f, 240.0f};
  calibration.d = {250.0f, 250.0f, 160.0f, 120.0f};
  calibration.R = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  calibration.T = {10.0f, 20.0f, 30.0f};
  return calibration;
}

inline void SetIdentityInverse(MaskedPointCloud* cloud) {
  const float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  std::memcpy(cloud->inverseRotation, identity, sizeof identity);
}

inline MaskedPointCloud StandardCloud() {
  MaskedPointCloud cloud;
  cloud.calibration = StandardCalibration();
  SetIdentityInverse(&cloud);
  return cloud;
}

struct Point {
  int16_t x;
  int16_t y;
  int16_t z;
};

inline Point AtColorPixel(int u, int v) {
  return {static_cast<int16_t>(2 * (u - 320)), static_cast<int16_t>(2 * (v - 240)), 1000};
}

// Packed 6-byte points, as the upstream channel hands them out.
class PointCloud {
 public:
  explicit PointCloud(std::vector<Point> points) {
    bytes_.resize(points.size() * 6);
    std::memcpy(bytes_.data(), points.data(), bytes_.size());
  }
  explicit PointCloud(size_t byteCount, unsigned char fill = 0) : bytes_(byteCount, fill) {}

  int16_t Z(size_t i) const {
    int16_t z;
    std::memcpy(&z, bytes_.data() + i * 6 + 4, sizeof z);
    return z;
  }
  weftcore::Channel::RawData* Raw() {
    raw_.address = bytes_.data();
    raw_.size = bytes_.size();
    return &raw_;
  }
  const std::vector<unsigned char>& Bytes() const { return bytes_; }

 private:
  std::vector<unsigned char> bytes_;
  weftcore::Channel::RawData raw_;
};

// Mask bytes in test memory and the record that points at them.
class Mask {
 public:
  Mask(uint32_t width, uint32_t height, uint8_t fill = 0)
      : Mask(width, height, static_cast<size_t>(width) * height, fill) {}
  Mask(uint32_t width, uint32_t height, size_t byteCount, uint8_t fill)
      : width_(width), height_(height), bytes_(byteCount, fill) {}

  uint8_t& At(size_t index) { return bytes_.at(index); }

  ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_ Record(bool isColorSource,
                                                               bool isInvertMask = false) const {
    ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_ record;
    record.name = "mask";
    record.maskDataAddress = reinterpret_cast<uintptr_t>(bytes_.data());
    record.maskDataSize = bytes_.size();
    record.maskDataWidth = width_;
    record.maskDataHeight = height_;
    record.maskDataTimestamp = 123456789;
    record.isColorSource = isColorSource;
    record.isInvertMask = isInvertMask;
    return record;
  }

 private:
  uint32_t width_;
  uint32_t height_;
  std::vector<uint8_t> bytes_;
};

inline ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_ ListOf(
    std::vector<ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_> records) {
  ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_ list;
  list.data = std::move(records);
  return list;
}

}  // namespace masking_test
