// Recordings for component_zelto_sim: the directory layouts, their validation
// and the exact depth-to-point-cloud rule (docs/simulator.md).
//
//   DIR/intrinsics.json        the depth camera, either {"width", "height", "fx", "fy",
//                              "cx", "cy"} or {"width", "height", "intrinsic_matrix":
//                              [fx, 0, 0, 0, fy, 0, cx, cy, 1]} (column-major), plus
//                              optional "depth_scale", "near", "far" (metres);
//                              camera.json is read when intrinsics.json is absent
//   DIR/depth/*.png            16-bit grayscale depth               } exactly one
//   DIR/pointcloud/*.bin       int16 x, y, z little-endian, w*h*6   } of the two
//   DIR/color/*.{png,jpg}      optional (or rgb/): one colour image per frame
//   DIR/timestamps.txt         optional: one value per frame, integer nanoseconds
//                              or seconds with a decimal point
//   DIR/calibration.json       optional: fields of the calibration record
//   DIR/masks/<name>/*.png     optional: 8-bit masks, one per frame,
//   DIR/masks/<name>/mask.json   with {"source": "color"} or {"source": "depth"}
//
// or the timestamp-list layout: DIR/depth.txt names the depth frames in order
// ("seconds path" lines, '#' comments), DIR/rgb.txt the colour images, each
// depth frame taking the colour image nearest in time within kColorMatchNs;
// the depth scale defaults to 5000 per metre there, and the camera JSON above
// is still required.
//
// Files in a folder are ordered by name with digit runs compared as numbers
// (2.png before 10.png). Every error is a weftcore::Status (level 1, block
// "ZeltoSim") whose message is one line that starts with the offending file or
// directory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "properties/zelto_tof_properties.h"
#include "zelto_sim/color_image.h"
#include "weftcore/status.h"

namespace ZeltoSim {

constexpr char kStatusBlock[] = "ZeltoSim";
// 30 frames per second: frame i is captured at i * kFramePeriodNs.
constexpr uint64_t kFramePeriodNs = 33333333;
// Used when intrinsics.json has no "depth_scale" (depth in millimetres).
constexpr double kDefaultDepthScale = 1000.0;
// The same for the timestamp-list layout, whose depth images count 1/5 mm.
constexpr double kListLayoutDepthScale = 5000.0;
// A depth frame of the list layout without a colour image this close in time
// has no colour (its vertices are left grey).
constexpr uint64_t kColorMatchNs = 20000000;

struct Intrinsics {
  int32_t width = 0;
  int32_t height = 0;
  double fx = 0;
  double fy = 0;
  double cx = 0;
  double cy = 0;
  double depthScale = kDefaultDepthScale;  // depth units per metre
  // Points nearer than `near` or farther than `far` (metres, 0: no limit)
  // become the invalid point (0, 0, 0) before the mesh source sees them.
  double near = 0;
  double far = 0;
};

// One point of the packed point cloud: millimetres, depth camera space.
struct Point16 {
  int16_t x = 0;
  int16_t y = 0;
  int16_t z = 0;
};

// The conversion rule, in double precision, rounding half away from zero:
//   z = round(value * 1000 / depthScale), clamped to 0..32767
//   x = round((u - cx) * z / fx), y = round((v - cy) * z / fy), clamped to int16
Point16 DepthToPoint(uint32_t value, int32_t u, int32_t v, const Intrinsics& intrinsics);
// A whole row-major image of intrinsics.width x intrinsics.height samples;
// `points` receives width * height * 3 int16 values (x, y, z per pixel).
void DepthImageToPointCloud(const uint16_t* depth, const Intrinsics& intrinsics, int16_t* points);

enum class FrameFormat {
  kDepthPng,    // depth/*.png
  kPointCloud,  // pointcloud/*.bin
};

struct MaskTrack {
  std::string name;            // the directory name under masks/
  bool isColorSource = false;  // mask.json "source": "color" (true) or "depth"
  uint32_t width = 0;          // of every mask image of the track
  uint32_t height = 0;
  std::vector<std::string> files;  // one per frame, sorted by name
};

struct Recording {
  std::string directory;
  std::string cameraFile;  // the camera JSON read: DIR/intrinsics.json or DIR/camera.json
  Intrinsics intrinsics;
  FrameFormat format = FrameFormat::kDepthPng;
  std::vector<std::string> frameFiles;  // full paths, sorted by name
  std::vector<uint64_t> timestamps;     // nanoseconds, one per frame
  // From calibration.json when present; otherwise an identity calibration
  // (colour camera = depth camera, R = I, T = 0, isCalibrated false).
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ calibration;
  bool hasCalibrationFile = false;
  std::vector<MaskTrack> masks;  // sorted by name
  // One colour image per frame ("": the frame has none), or empty when the
  // recording has no colour images; all of colorWidth x colorHeight pixels.
  std::vector<std::string> colorFiles;
  uint32_t colorWidth = 0;
  uint32_t colorHeight = 0;
  // Things the recording holds that are ignored, one line each ("<file>: ...").
  std::vector<std::string> warnings;
};

// Reads and validates a recording directory without decoding the frames:
// the JSON files, every PNG's chunks and header (bit depth, colour type,
// size), every colour image's structure and size, every point-cloud file
// size, the timestamps and the mask tracks.
weftcore::Status LoadRecording(const std::string& directory, Recording* recording);

// Frame `index` as a packed point cloud of width * height * 3 int16 values
// (depth PNGs are converted with DepthImageToPointCloud), clipped to the
// intrinsics' near and far limits.
weftcore::Status ReadPointCloudFrame(const Recording& recording, size_t index,
                                     std::vector<int16_t>* points);

// The colour image of frame `index` (an error when the frame has none).
weftcore::Status ReadColorFrame(const Recording& recording, size_t index, ColorImage* image);

// Mask image `index` of `track` (8-bit, row-major, width * height bytes).
weftcore::Status ReadMaskFrame(const MaskTrack& track, size_t index, std::vector<uint8_t>* bytes);

}  // namespace ZeltoSim
