// The synthetic scene: a room (floor, ceiling, walls with a doorway), a box,
// a rolling sphere and a standing person-like figure, seen by a 640 x 480
// time-of-flight camera at 30 frames per second, with a colour camera
// calibrated against it and two masks ("person" on the colour image, "floor"
// on the depth image). Everything is a pure function of (seed, frame index).
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "properties/zelto_tof_properties.h"
#include "zelto_sim/recording.h"

namespace ZeltoSim {

constexpr int32_t kSceneWidth = 640;
constexpr int32_t kSceneHeight = 480;
// Returned depth beyond this radial distance (mm) is invalid (0).
constexpr double kSceneMaxRange = 6000.0;

constexpr char kPersonMaskName[] = "person";  // on the colour image
constexpr uint32_t kPersonMaskWidth = 256;
constexpr uint32_t kPersonMaskHeight = 192;
constexpr char kFloorMaskName[] = "floor";    // on the depth image
constexpr uint32_t kFloorMaskWidth = 320;
constexpr uint32_t kFloorMaskHeight = 240;

// fx = fy = 525, cx = 319.5, cy = 239.5, depth in millimetres.
Intrinsics SceneIntrinsics();
// Colour camera 640 x 480 (fx = fy = 500, cx = 320, cy = 240), rotated by
// 1.5 degrees about y and 0.5 degrees about x against the depth camera,
// T = 0 (the mesh source applies the rotation only).
ZeltoTof::ZeltoTofCalibrationSettingsProperty_ SceneCalibration();

// Renders frames and masks. The still part of the scene is ray-cast once at
// construction (a few tens of milliseconds); each frame then adds only the
// moving sphere and the noise. Immutable after construction: the const
// members may run on several threads at once.
class SyntheticScene {
 public:
  explicit SyntheticScene(uint64_t seed);

  // Depth in millimetres (0 = invalid) of frame `index`, row-major,
  // kSceneWidth x kSceneHeight samples. Noise and dropouts depend on the seed.
  void RenderDepth(uint64_t index, std::vector<uint16_t>* depth) const;
  // 255 where the person is the first surface seen through the mask pixel
  // (colour camera), else 0; kPersonMaskWidth x kPersonMaskHeight.
  void RenderPersonMask(uint64_t index, std::vector<uint8_t>* mask) const;
  // 255 where the floor is the first surface seen through the mask pixel
  // (depth camera), else 0; kFloorMaskWidth x kFloorMaskHeight.
  void RenderFloorMask(uint64_t index, std::vector<uint8_t>* mask) const;

 private:
  struct Views;  // the still scene seen through every pixel of each image
  uint64_t seed_;
  std::shared_ptr<const Views> views_;
};

}  // namespace ZeltoSim
