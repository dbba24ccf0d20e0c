// The list of every record type, for typed tests over all of them.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "properties/record_equality.h"

namespace zelto_test {

using AllRecordTypes = ::testing::Types<
    Zelto::ZeltoLogLevelProperty_, ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_,
    ZeltoMesh::ZeltoMeshMaskSettingsProperty_, ZeltoSegmentation::ZeltoSegmentationMaskInfo_,
    weftcore::ChannelInfoProperty, weftcore::FrameRateProperty,
    ZeltoTof::ZeltoTofCalibrationSettingsProperty_, ZeltoTof::ZeltoTofProcessTargetsProperty_,
    Zelto::ZeltoRuntimeSettingsProperty_, ZeltoTof::ZeltoTofCamera2ConfigurationProperty_,
    ZeltoTof::ZeltoTofCamera2IntrinsicsProperty_,
    ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_,
    ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_>;

// Test names carry the record's name instead of an index.
struct RecordTypeNames {
  template <typename T>
  static std::string GetName(int) {
    if (std::is_same_v<T, Zelto::ZeltoLogLevelProperty_>) return "LogLevel";
    if (std::is_same_v<T, ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_>) return "MeshAlgorithmConfig";
    if (std::is_same_v<T, ZeltoMesh::ZeltoMeshMaskSettingsProperty_>) return "MaskSettings";
    if (std::is_same_v<T, ZeltoSegmentation::ZeltoSegmentationMaskInfo_>) return "MaskInfo";
    if (std::is_same_v<T, weftcore::ChannelInfoProperty>) return "ChannelInfo";
    if (std::is_same_v<T, weftcore::FrameRateProperty>) return "FrameRate";
    if (std::is_same_v<T, ZeltoTof::ZeltoTofCalibrationSettingsProperty_>) return "Calibration";
    if (std::is_same_v<T, ZeltoTof::ZeltoTofProcessTargetsProperty_>) return "ProcessTargets";
    if (std::is_same_v<T, Zelto::ZeltoRuntimeSettingsProperty_>) return "RuntimeSettings";
    if (std::is_same_v<T, ZeltoTof::ZeltoTofCamera2ConfigurationProperty_>) return "CameraConfiguration";
    if (std::is_same_v<T, ZeltoTof::ZeltoTofCamera2IntrinsicsProperty_>) return "CameraIntrinsics";
    if (std::is_same_v<T, ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_>) return "MaskDataList";
    if (std::is_same_v<T, ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_>) return "MaskData";
    return "Unnamed";
  }
};

}  // namespace zelto_test
