// Field-by-field equality of the property records, for the tests only.
// Floats compare by bit pattern, so -0.0 and 0.0 differ and a NaN equals
// itself; the round trip must preserve the exact float 32 value.
#pragma once

#include <cstdint>
#include <cstring>
#include <tuple>

#include "masking/mask_settings_property.h"
#include "mesh/mesh_algorithm_config_property.h"
#include "properties/zelto_log_level_property.h"
#include "properties/zelto_runtime_settings_property.h"
#include "properties/zelto_segmentation_properties.h"
#include "properties/zelto_tof_properties.h"
#include "weftcore/framework_properties.h"

namespace zelto_test {
inline uint32_t Bits(float value) {
  uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}
}  // namespace zelto_test

namespace Zelto {
inline bool operator==(const ZeltoLogLevelProperty_& a, const ZeltoLogLevelProperty_& b) {
  return a.logLevel == b.logLevel;
}
inline bool operator==(const ZeltoRuntimeSettingsProperty_& a,
                       const ZeltoRuntimeSettingsProperty_& b) {
  return std::tie(a.runMode, a.isRemoteServer, a.isUsingArFoundation) ==
         std::tie(b.runMode, b.isRemoteServer, b.isUsingArFoundation);
}
}  // namespace Zelto

namespace ZeltoMesh {
inline bool operator==(const ZeltoMeshAlgorithmConfigProperty_& a,
                       const ZeltoMeshAlgorithmConfigProperty_& b) {
  return std::tie(a.meshReductionLevel, a.resetTrianglePeriod) ==
         std::tie(b.meshReductionLevel, b.resetTrianglePeriod);
}
}  // namespace ZeltoMesh

namespace ZeltoSegmentation {
inline bool operator==(const ZeltoSegmentationMaskInfo_& a, const ZeltoSegmentationMaskInfo_& b) {
  return std::tie(a.name, a.isColorSource, a.isInvertMask) ==
         std::tie(b.name, b.isColorSource, b.isInvertMask);
}
inline bool operator==(const ZeltoSegmentationMaskDataProperty_& a,
                       const ZeltoSegmentationMaskDataProperty_& b) {
  return std::tie(a.name, a.maskDataAddress, a.maskDataSize, a.maskDataWidth, a.maskDataHeight,
                  a.maskDataTimestamp, a.isColorSource, a.isInvertMask) ==
         std::tie(b.name, b.maskDataAddress, b.maskDataSize, b.maskDataWidth, b.maskDataHeight,
                  b.maskDataTimestamp, b.isColorSource, b.isInvertMask);
}
inline bool operator==(const ZeltoSegmentationMaskDataListProperty_& a,
                       const ZeltoSegmentationMaskDataListProperty_& b) {
  return a.data == b.data;
}
}  // namespace ZeltoSegmentation

namespace ZeltoMesh {
inline bool operator==(const ZeltoMeshMaskSettingsProperty_& a,
                       const ZeltoMeshMaskSettingsProperty_& b) {
  return std::tie(a.enabled, a.maskInfo, a.maskThreshold) ==
         std::tie(b.enabled, b.maskInfo, b.maskThreshold);
}
}  // namespace ZeltoMesh

namespace ZeltoTof {
using zelto_test::Bits;
inline bool operator==(const InternalParameter_& a, const InternalParameter_& b) {
  return std::make_tuple(Bits(a.fx), Bits(a.fy), Bits(a.cx), Bits(a.cy)) ==
         std::make_tuple(Bits(b.fx), Bits(b.fy), Bits(b.cx), Bits(b.cy));
}
inline bool operator==(const Matrix_& a, const Matrix_& b) {
  return std::make_tuple(Bits(a.a), Bits(a.b), Bits(a.c), Bits(a.d), Bits(a.e), Bits(a.f),
                         Bits(a.g), Bits(a.h), Bits(a.i)) ==
         std::make_tuple(Bits(b.a), Bits(b.b), Bits(b.c), Bits(b.d), Bits(b.e), Bits(b.f),
                         Bits(b.g), Bits(b.h), Bits(b.i));
}
inline bool operator==(const Vector_& a, const Vector_& b) {
  return std::make_tuple(Bits(a.x), Bits(a.y), Bits(a.z)) ==
         std::make_tuple(Bits(b.x), Bits(b.y), Bits(b.z));
}
inline bool operator==(const ZeltoTofCalibrationSettingsProperty_& a,
                       const ZeltoTofCalibrationSettingsProperty_& b) {
  return std::tie(a.colorWidth, a.colorHeight, a.depthWidth, a.depthHeight, a.isCalibrated) ==
             std::tie(b.colorWidth, b.colorHeight, b.depthWidth, b.depthHeight,
                      b.isCalibrated) &&
         a.c == b.c && a.d == b.d && a.R == b.R && a.T == b.T;
}
inline bool operator==(const ZeltoTofProcessTargetsProperty_& a,
                       const ZeltoTofProcessTargetsProperty_& b) {
  return std::tie(a.processDepth, a.processConfidence, a.processPointCloud) ==
         std::tie(b.processDepth, b.processConfidence, b.processPointCloud);
}
inline bool operator==(const ZeltoTofCamera2IntrinsicsProperty_& a,
                       const ZeltoTofCamera2IntrinsicsProperty_& b) {
  return std::make_tuple(Bits(a.fx), Bits(a.fy), Bits(a.cx), Bits(a.cy), Bits(a.k1), Bits(a.k2),
                         Bits(a.k3), Bits(a.p1), Bits(a.p2)) ==
         std::make_tuple(Bits(b.fx), Bits(b.fy), Bits(b.cx), Bits(b.cy), Bits(b.k1), Bits(b.k2),
                         Bits(b.k3), Bits(b.p1), Bits(b.p2));
}
inline bool operator==(const ZeltoTofCamera2ConfigurationProperty_& a,
                       const ZeltoTofCamera2ConfigurationProperty_& b) {
  return std::tie(a.isCalibrated, a.cameraId, a.colorCameraId, a.uid, a.width, a.height) ==
             std::tie(b.isCalibrated, b.cameraId, b.colorCameraId, b.uid, b.width, b.height) &&
         Bits(a.frameRate) == Bits(b.frameRate) &&
         Bits(a.unambiguousRange) == Bits(b.unambiguousRange) && a.lensFacing == b.lensFacing &&
         a.intrinsics == b.intrinsics &&
         std::tie(a.name, a.isDepthPrivate, a.isFusion, a.fusionSourceWidth,
                  a.fusionSourceHeight) == std::tie(b.name, b.isDepthPrivate, b.isFusion,
                                                    b.fusionSourceWidth, b.fusionSourceHeight);
}
}  // namespace ZeltoTof

namespace weftcore {
inline bool operator==(const ChannelInfo& a, const ChannelInfo& b) {
  return std::tie(a.raw_data_type, a.description) == std::tie(b.raw_data_type, b.description);
}
inline bool operator==(const ChannelInfoProperty& a, const ChannelInfoProperty& b) {
  return a.channels == b.channels;
}
inline bool operator==(const FrameRateProperty& a, const FrameRateProperty& b) {
  return std::tie(a.num, a.denom) == std::tie(b.num, b.denom);
}
}  // namespace weftcore
