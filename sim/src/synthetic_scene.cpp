// Renders the synthetic scene. Noise is a hash of (seed, frame, pixel), so a
// frame is reproducible on its own, in any order, on any machine.
#include "zelto_sim/synthetic_scene.h"

#include <algorithm>
#include <cmath>

#include "scene_geometry.h"

namespace ZeltoSim {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kMinRange = 200.0;       // mm; nearer surfaces are not measured
constexpr double kMinCosine = 0.1;        // grazing beyond ~84 degrees returns nothing
constexpr uint64_t kDropoutPerMille = 3;  // random invalid pixels

constexpr double kColorFocal = 500.0;
constexpr double kColorCx = 320.0;
constexpr double kColorCy = 240.0;

// splitmix64's finaliser: a well-mixed 64-bit hash.
uint64_t Mix(uint64_t x) {
  x += 0x9E3779B97F4A7C15ull;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
  return x ^ (x >> 31);
}

// Approximately standard normal: the Irwin-Hall sum of four 16-bit uniforms.
double Gaussian(uint64_t bits) {
  double sum = 0;
  for (int i = 0; i < 4; ++i) sum += static_cast<double>((bits >> (16 * i)) & 0xFFFF) / 65536.0;
  return (sum - 2.0) * 1.7320508075688772;  // sqrt(3): unit variance
}

ScenePose PoseOf(uint64_t index) { return PoseAt(static_cast<double>(index) / 30.0); }

double Radians(double degrees) { return degrees * kPi / 180.0; }

// ToF-like measurement of one ray: 0 when nothing usable comes back.
uint16_t Measure(const Hit& hit, uint64_t noiseBits) {
  if (hit.surface == Surface::kNone || hit.cosine < kMinCosine) return 0;
  if (hit.range < kMinRange || hit.range > kSceneMaxRange) return 0;
  if (Mix(noiseBits) % 1000 < kDropoutPerMille) return 0;
  // Camera directions have z = 1, so t is the depth along the optical axis.
  const double sigma = 1.0 + 0.0015 * hit.t;
  const double depth = std::round(hit.t + sigma * Gaussian(noiseBits));
  return static_cast<uint16_t>(std::clamp(depth, 1.0, 65535.0));
}

Vec3 DepthPixelDirection(double u, double v) {
  const Intrinsics k = SceneIntrinsics();
  return CameraToRoom(Vec3{(u - k.cx) / k.fx, (v - k.cy) / k.fy, 1.0});
}

// The still scene seen through each pixel of one image.
struct View {
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<Vec3> directions;  // room frame
  std::vector<Hit> hits;

  template <typename Direction>
  View(uint32_t w, uint32_t h, Direction direction) : width(w), height(h) {
    directions.reserve(static_cast<size_t>(w) * h);
    hits.reserve(static_cast<size_t>(w) * h);
    for (uint32_t j = 0; j < h; ++j) {
      for (uint32_t i = 0; i < w; ++i) {
        directions.push_back(direction(i, j));
        hits.push_back(CastStaticRay(directions.back()));
      }
    }
  }

  Hit At(size_t pixel, const ScenePose& pose) const {
    return AddMovingObjects(hits[pixel], directions[pixel], pose);
  }
};

// Colour mask pixel (i, j) as a room direction: its centre on the colour
// image, then p = R q (the mesh source maps depth points back with R's inverse).
Vec3 PersonMaskDirection(uint32_t i, uint32_t j) {
  static const ZeltoTof::ZeltoTofCalibrationSettingsProperty_ calibration = SceneCalibration();
  const ZeltoTof::Matrix_& r = calibration.R;
  const double qx = ((i + 0.5) * calibration.colorWidth / kPersonMaskWidth - calibration.c.cx) /
                    calibration.c.fx;
  const double qy = ((j + 0.5) * calibration.colorHeight / kPersonMaskHeight - calibration.c.cy) /
                    calibration.c.fy;
  return CameraToRoom(Vec3{r.a * qx + r.b * qy + r.c, r.d * qx + r.e * qy + r.f,
                           r.g * qx + r.h * qy + r.i});
}

// Depth mask pixel (i, j): depth pixels u = 2i and 2i + 1 fall into column i.
Vec3 FloorMaskDirection(uint32_t i, uint32_t j) {
  const double scaleX = static_cast<double>(kSceneWidth) / kFloorMaskWidth;
  const double scaleY = static_cast<double>(kSceneHeight) / kFloorMaskHeight;
  return DepthPixelDirection((i + 0.5) * scaleX - 0.5, (j + 0.5) * scaleY - 0.5);
}

void RenderMask(const View& view, uint64_t index, Surface surface, std::vector<uint8_t>* mask) {
  mask->assign(view.hits.size(), 0);
  const ScenePose pose = PoseOf(index);
  for (size_t pixel = 0; pixel < view.hits.size(); ++pixel) {
    if (view.At(pixel, pose).surface == surface) (*mask)[pixel] = 255;
  }
}

}  // namespace

struct SyntheticScene::Views {
  View depth{kSceneWidth, kSceneHeight,
             [](uint32_t u, uint32_t v) { return DepthPixelDirection(u, v); }};
  View person{kPersonMaskWidth, kPersonMaskHeight, PersonMaskDirection};
  View floor{kFloorMaskWidth, kFloorMaskHeight, FloorMaskDirection};
};

Intrinsics SceneIntrinsics() {
  Intrinsics intrinsics;
  intrinsics.width = kSceneWidth;
  intrinsics.height = kSceneHeight;
  intrinsics.fx = 525.0;
  intrinsics.fy = 525.0;
  intrinsics.cx = 319.5;
  intrinsics.cy = 239.5;
  intrinsics.depthScale = 1000.0;
  return intrinsics;
}

ZeltoTof::ZeltoTofCalibrationSettingsProperty_ SceneCalibration() {
  const Intrinsics depth = SceneIntrinsics();
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ calibration;
  calibration.colorWidth = 640;
  calibration.colorHeight = 480;
  calibration.depthWidth = depth.width;
  calibration.depthHeight = depth.height;
  calibration.isCalibrated = true;
  calibration.c = ZeltoTof::InternalParameter_{
      static_cast<float>(kColorFocal), static_cast<float>(kColorFocal),
      static_cast<float>(kColorCx), static_cast<float>(kColorCy)};
  calibration.d = ZeltoTof::InternalParameter_{
      static_cast<float>(depth.fx), static_cast<float>(depth.fy), static_cast<float>(depth.cx),
      static_cast<float>(depth.cy)};
  // R = Ry(1.5 deg) * Rx(0.5 deg): colour-camera directions into the depth camera.
  const double cy = std::cos(Radians(1.5)), sy = std::sin(Radians(1.5));
  const double cx = std::cos(Radians(0.5)), sx = std::sin(Radians(0.5));
  ZeltoTof::Matrix_& r = calibration.R;
  r = ZeltoTof::Matrix_{static_cast<float>(cy),       static_cast<float>(sy * sx),
                        static_cast<float>(sy * cx),  0.0f,
                        static_cast<float>(cx),       static_cast<float>(-sx),
                        static_cast<float>(-sy),      static_cast<float>(cy * sx),
                        static_cast<float>(cy * cx)};
  return calibration;
}

SyntheticScene::SyntheticScene(uint64_t seed) : seed_(seed), views_(std::make_shared<Views>()) {}

void SyntheticScene::RenderDepth(uint64_t index, std::vector<uint16_t>* depth) const {
  const View& view = views_->depth;
  depth->resize(view.hits.size());
  const ScenePose pose = PoseOf(index);
  const uint64_t frameKey = Mix(Mix(seed_) ^ (index * 0xD1B54A32D192ED03ull));
  for (size_t pixel = 0; pixel < view.hits.size(); ++pixel) {
    (*depth)[pixel] = Measure(view.At(pixel, pose), Mix(frameKey + pixel));
  }
}

void SyntheticScene::RenderPersonMask(uint64_t index, std::vector<uint8_t>* mask) const {
  RenderMask(views_->person, index, Surface::kPerson, mask);
}

void SyntheticScene::RenderFloorMask(uint64_t index, std::vector<uint8_t>* mask) const {
  RenderMask(views_->floor, index, Surface::kFloor, mask);
}

}  // namespace ZeltoSim
