// MaskedPointCloud::Apply with any calibration, mask list and point cloud, as
// another component may describe them. Each mask's address points into a
// buffer of exactly the stated size, so any read past it is caught. A failed
// Apply leaves the points as they came; a successful one changes nothing but
// the depth of masked points, which becomes 32001.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <vector>

#include "fuzz/require.h"
#include "masking/masked_point_cloud.h"

namespace {

// Any bit patterns, NaN and infinities included.
void Fill(FuzzedDataProvider& input, std::initializer_list<float*> fields) {
  for (float* field : fields) {
    const uint32_t bits = input.ConsumeIntegral<uint32_t>();
    std::memcpy(field, &bits, sizeof bits);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  MaskedPointCloud cloud;
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_& k = cloud.calibration;
  for (int32_t* field : {&k.colorWidth, &k.colorHeight, &k.depthWidth, &k.depthHeight}) {
    *field = input.ConsumeIntegral<int32_t>();
  }
  Fill(input, {&k.c.fx, &k.c.fy, &k.c.cx, &k.c.cy, &k.d.fx, &k.d.fy, &k.d.cx, &k.d.cy, &k.T.x,
               &k.T.y, &k.T.z});
  Fill(input, {&k.R.a, &k.R.b, &k.R.c, &k.R.d, &k.R.e, &k.R.f, &k.R.g, &k.R.h, &k.R.i});
  for (float& value : cloud.inverseRotation) Fill(input, {&value});
  cloud.maskThreshold = input.ConsumeIntegral<uint8_t>();

  std::vector<std::vector<uint8_t>> masks(input.ConsumeIntegralInRange<size_t>(0, 4));
  ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_ list;
  for (std::vector<uint8_t>& bytes : masks) {
    bytes = input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(0, 4096));
    auto& mask = list.data.emplace_back();
    mask.maskDataAddress = bytes.empty() ? 0 : reinterpret_cast<uintptr_t>(bytes.data());
    mask.maskDataSize = bytes.size();
    mask.maskDataWidth = input.ConsumeIntegral<uint32_t>();
    mask.maskDataHeight = input.ConsumeIntegral<uint32_t>();
    mask.isColorSource = input.ConsumeBool();
    mask.isInvertMask = input.ConsumeBool();
  }

  const std::vector<uint8_t> before = input.ConsumeRemainingBytes<uint8_t>();
  std::vector<uint8_t> points = before;
  weftcore::Channel::RawData raw;
  raw.address = points.empty() ? nullptr : points.data();
  raw.size = points.size();
  if (!cloud.Apply(&raw, &list).ok()) {
    Require(points == before);
    return 0;
  }
  const int16_t masked = 32001;
  for (size_t i = 0; i < points.size(); ++i) {
    const size_t point = i - i % 6;  // a changed byte is a depth byte of a whole point
    if (points[i] == before[i]) continue;
    Require(i % 6 >= 4 && point + 6 <= points.size() &&
            std::memcmp(&points[point + 4], &masked, sizeof masked) == 0);
  }
  return 0;
}
