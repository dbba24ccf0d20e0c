// Test data of the masking tests: a calibration served by a minimal camera
// stream, single points, and masks held in test memory.
#pragma once

#include <vector>

#include "masking/masked_point_cloud.h"
#include "support/bytes.h"

namespace masking_test {

using Calibration = ZeltoTof::ZeltoTofCalibrationSettingsProperty_;
using MaskList = ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_;
using weftcore::Status;
constexpr int16_t kMasked = 32001;

// Colour 640 x 480 (f 500, centre 320, 240), depth 320 x 240 (f 250, centre 160, 120), no rotation:
// AtColorPixel(u, v) lands on colour pixel (u, v) and depth pixel (u / 2, v / 2); T must go unused.
inline const Calibration kStandardCalibration{640, 480, 320, 240, true, {500, 500, 320, 240}, {250, 250, 160, 120},
                                             {1, 0, 0, 0, 1, 0, 0, 0, 1}, {10, 20, 30}};

// Answers the calibration read as the ToF camera stream does, or refuses it.
class CalibrationStream : public weftcore::Stream {
 public:
  CalibrationStream(const Calibration& reply, bool refuse) : reply_(zelto_test::Encode(reply)), refuse_(refuse) {}
  Status Start() override { return {}; }
  Status Stop() override { return {}; }
  Status GetFrame(weftcore::Frame**, int32_t) override { return {}; }
  Status ReleaseFrame(weftcore::Frame*) override { return {}; }
  Status GetSerializedProperty(const std::string& key, const void*, size_t, void** property, size_t* size) override {
    if (refuse_ || key != "kZeltoTofCalibrationSettingsKey") return Status(weftcore::kLevelError, weftcore::kCauseNotFound, "no");
    *property = reply_.data();
    *size = reply_.size();
    return {};
  }
  Status ReleaseSerializedProperty(const std::string&, void*, size_t) override { return {}; }
  Status SetSerializedProperty(const std::string&, const void*, size_t) override { return {}; }
  weftcore::StreamFunctionLockManager* GetFunctionLockManager() override { return &locks_; }

 private:
  zelto_test::Bytes reply_;
  bool refuse_;
  weftcore::StreamFunctionLockManager locks_;
};

// `cloud` reads its calibration as the frame loop has it do before Apply.
inline void ReadCalibration(MaskedPointCloud* cloud, const Calibration& reply, bool refuse = false) {
  CalibrationStream stream(reply, refuse);
  cloud->stream = &stream;
  cloud->SetupCoordinate();
  cloud->stream = nullptr;
}

struct Point { int16_t x, y, z; };
inline Point AtColorPixel(int u, int v) { return {int16_t(2 * (u - 320)), int16_t(2 * (v - 240)), 1000}; }

struct Mask {
  bool color;
  uint32_t width, height;
  std::vector<uint8_t> bytes;  // width x height of `fill` when `size` is 0
  bool inverted = false;
  Mask(bool color, uint32_t width, uint32_t height, uint8_t fill, size_t size)
      : color(color), width(width), height(height), bytes(size ? size : size_t{width} * height, fill) {}
  Mask& Set(size_t index, uint8_t value) { return bytes.at(index) = value, *this; }
  Mask& Inverted() { return inverted = true, *this; }
};
inline Mask Color(uint32_t w, uint32_t h, uint8_t fill = 0, size_t size = 0) { return Mask(true, w, h, fill, size); }
inline Mask Depth(uint32_t w, uint32_t h, uint8_t fill = 0, size_t size = 0) { return Mask(false, w, h, fill, size); }

// The records point into `masks`, which must outlive them.
inline MaskList ListOf(const std::vector<Mask>& masks) {
  MaskList list;
  for (const Mask& m : masks) {
    list.data.push_back({"mask", uintptr_t(m.bytes.data()), m.bytes.size(), m.width, m.height, 123456789, m.color, m.inverted});
  }
  return list;
}
void ListOf(std::vector<Mask>&&) = delete;

}  // namespace masking_test
