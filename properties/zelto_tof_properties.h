// The time-of-flight camera streams (live and recorded) and the records the
// mesh source reads from them: configuration, calibration, process targets.
#pragma once

#include <cstdint>
#include <string>

#include "weftcore/serialize.h"

namespace ZeltoTof {

constexpr char kCamera2StreamKey[] = "zelto_tof_camera2_stream";
constexpr char kCamera2StreamPlaybackKey[] = "player_tof_stream";
constexpr char kZeltoTofCalibrationSettingsKey[] = "kZeltoTofCalibrationSettingsKey";
constexpr char kZeltoTofProcessTargetsKey[] = "kZeltoTofProcessTargetsKey";
constexpr char kZeltoTofCamera2CurrentConfigurationKey[] =
    "kZeltoTofCamera2CurrentConfigurationKey";

struct InternalParameter_ {
  float fx = 0;
  float fy = 0;
  float cx = 0;
  float cy = 0;
  MSGPACK_DEFINE_MAP(fx, fy, cx, cy);
};

struct Matrix_ {
  float a = 0, b = 0, c = 0;
  float d = 0, e = 0, f = 0;
  float g = 0, h = 0, i = 0;
  MSGPACK_DEFINE_MAP(a, b, c, d, e, f, g, h, i);
};

struct Vector_ {
  float x = 0;
  float y = 0;
  float z = 0;
  MSGPACK_DEFINE_MAP(x, y, z);
};

struct ZeltoTofCalibrationSettingsProperty_ {
  int32_t colorWidth = 0;
  int32_t colorHeight = 0;
  int32_t depthWidth = 0;
  int32_t depthHeight = 0;
  bool isCalibrated = false;
  InternalParameter_ c;
  InternalParameter_ d;
  Matrix_ R;
  Vector_ T;
  MSGPACK_DEFINE_MAP(colorWidth, colorHeight, depthWidth, depthHeight, isCalibrated, c, d, R, T);
};

struct ZeltoTofProcessTargetsProperty_ {
  bool processDepth = false;
  bool processConfidence = false;
  bool processPointCloud = false;
  MSGPACK_DEFINE_MAP(processDepth, processConfidence, processPointCloud);
};

struct ZeltoTofCamera2IntrinsicsProperty_ {
  float fx = 0, fy = 0, cx = 0, cy = 0;
  float k1 = 0, k2 = 0, k3 = 0;
  float p1 = 0, p2 = 0;
  MSGPACK_DEFINE_MAP(fx, fy, cx, cy, k1, k2, k3, p1, p2);
};

struct ZeltoTofCamera2ConfigurationProperty_ {
  bool isCalibrated = false;
  std::string cameraId;
  std::string colorCameraId;
  int32_t uid = 0;
  int32_t width = 0;
  int32_t height = 0;
  float frameRate = 0;
  float unambiguousRange = 0;
  int32_t lensFacing = 0;
  ZeltoTofCamera2IntrinsicsProperty_ intrinsics;
  std::string name;
  bool isDepthPrivate = false;
  bool isFusion = false;
  int32_t fusionSourceWidth = 0;
  int32_t fusionSourceHeight = 0;
  MSGPACK_DEFINE_MAP(isCalibrated, cameraId, colorCameraId, uid, width, height, frameRate,
                     unambiguousRange, lensFacing, intrinsics, name, isDepthPrivate, isFusion,
                     fusionSourceWidth, fusionSourceHeight);
};

}  // namespace ZeltoTof
