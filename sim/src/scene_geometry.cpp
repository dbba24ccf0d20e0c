// The scene's primitives. Room frame: camera at the origin, y down; the
// floor is 1.3 m below the camera. A doorway in the back wall and the range
// limit give out-of-range pixels; curved silhouettes give grazing angles.
#include "scene_geometry.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ZeltoSim {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kPitch = 15.0 * kPi / 180.0;

constexpr double kFloorY = 1300.0;
constexpr double kCeilingY = -1300.0;
constexpr double kLeftWallX = -2200.0;
constexpr double kRightWallX = 2400.0;
constexpr double kBackWallZ = 5600.0;
constexpr double kDoorMinX = 800.0, kDoorMaxX = 1700.0, kDoorTopY = -700.0;

constexpr Vec3 kBoxMin{900.0, 800.0, 2000.0};
constexpr Vec3 kBoxMax{1500.0, kFloorY, 2600.0};

constexpr double kSphereRadius = 250.0;
constexpr double kSpherePeriod = 4.0;  // seconds per loop

constexpr double kPersonX = -1100.0;
constexpr double kPersonZ = 3000.0;

struct Capsule {  // vertical: axis at (x, z), from y0 up to y1 (y0 < y1)
  double x, z, y0, y1, radius;
};

constexpr Capsule kPersonCapsules[] = {
    {kPersonX - 110.0, kPersonZ, 520.0, 1220.0, 80.0},  // legs
    {kPersonX + 110.0, kPersonZ, 520.0, 1220.0, 80.0},
    {kPersonX, kPersonZ, -60.0, 380.0, 190.0},         // torso
    {kPersonX - 290.0, kPersonZ, -40.0, 440.0, 60.0},  // arms
    {kPersonX + 290.0, kPersonZ, -40.0, 440.0, 60.0},
    {kPersonX, kPersonZ, -230.0, -100.0, 50.0},  // neck
};
constexpr Vec3 kHeadCenter{kPersonX, -330.0, kPersonZ};
constexpr double kHeadRadius = 120.0;
// Encloses every part of the person: a cheap rejection test first.
constexpr Vec3 kPersonBoundCenter{kPersonX, 425.0, kPersonZ};
constexpr double kPersonBoundRadius = 950.0;

double Dot(const Vec3& a, const Vec3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

// Keeps the nearer of two hits (t > 0 only).
void Offer(Hit* best, Surface surface, double t, double cosine) {
  if (t > 0 && (best->surface == Surface::kNone || t < best->t)) *best = Hit{surface, t, cosine, 0};
}

// Entry parameter of a sphere along the ray; false when missed or behind.
bool SphereEntry(const Vec3& d, const Vec3& center, double radius, double* t) {
  const double a = Dot(d, d);
  const double b = -2.0 * Dot(d, center);
  const double c = Dot(center, center) - radius * radius;
  const double disc = b * b - 4.0 * a * c;
  if (disc < 0) return false;
  *t = (-b - std::sqrt(disc)) / (2.0 * a);
  return *t > 0;
}

void OfferSphere(Hit* best, Surface surface, const Vec3& d, double length, const Vec3& center,
                 double radius) {
  double t = 0;
  if (!SphereEntry(d, center, radius, &t)) return;
  if (best->surface != Surface::kNone && best->t <= t) return;  // the normal only for winners
  const Vec3 normal{t * d.x - center.x, t * d.y - center.y, t * d.z - center.z};
  Offer(best, surface, t, std::fabs(Dot(d, normal)) / (radius * length));
}

void OfferCapsule(Hit* best, Surface surface, const Vec3& d, double length, const Capsule& cap) {
  const double a = d.x * d.x + d.z * d.z;
  const double b = -2.0 * (d.x * cap.x + d.z * cap.z);
  const double c = cap.x * cap.x + cap.z * cap.z - cap.radius * cap.radius;
  const double disc = b * b - 4.0 * a * c;
  if (a > 0 && disc >= 0) {
    const double t = (-b - std::sqrt(disc)) / (2.0 * a);
    const double y = t * d.y;
    if (y >= cap.y0 && y <= cap.y1) {
      const double cosine =
          std::fabs(d.x * (t * d.x - cap.x) + d.z * (t * d.z - cap.z)) / (cap.radius * length);
      Offer(best, surface, t, cosine);
    }
  }
  OfferSphere(best, surface, d, length, Vec3{cap.x, cap.y0, cap.z}, cap.radius);
  OfferSphere(best, surface, d, length, Vec3{cap.x, cap.y1, cap.z}, cap.radius);
}

void OfferRoom(Hit* best, const Vec3& d, double length) {
  if (d.y > 0) Offer(best, Surface::kFloor, kFloorY / d.y, d.y / length);
  if (d.y < 0) Offer(best, Surface::kCeiling, kCeilingY / d.y, -d.y / length);
  if (d.x > 0) Offer(best, Surface::kWall, kRightWallX / d.x, d.x / length);
  if (d.x < 0) Offer(best, Surface::kWall, kLeftWallX / d.x, -d.x / length);
  if (d.z > 0) {
    const double t = kBackWallZ / d.z;
    const double x = t * d.x, y = t * d.y;
    const bool inDoorway = x > kDoorMinX && x < kDoorMaxX && y > kDoorTopY;
    // Through the doorway the ray leaves the room: nothing is measured.
    if (best->surface == Surface::kNone || t < best->t) {
      *best = inDoorway ? Hit{} : Hit{Surface::kWall, t, d.z / length, 0};
    }
  }
}

void OfferBox(Hit* best, const Vec3& d, double length) {
  const double origin[3] = {0, 0, 0};
  const double dir[3] = {d.x, d.y, d.z};
  const double lo[3] = {kBoxMin.x, kBoxMin.y, kBoxMin.z};
  const double hi[3] = {kBoxMax.x, kBoxMax.y, kBoxMax.z};
  double tNear = -1e300, tFar = 1e300;
  int axis = 0;
  for (int k = 0; k < 3; ++k) {
    if (dir[k] == 0) {
      if (origin[k] < lo[k] || origin[k] > hi[k]) return;
      continue;
    }
    double t0 = (lo[k] - origin[k]) / dir[k];
    double t1 = (hi[k] - origin[k]) / dir[k];
    if (t0 > t1) std::swap(t0, t1);
    if (t0 > tNear) {
      tNear = t0;
      axis = k;
    }
    tFar = std::min(tFar, t1);
  }
  if (tNear <= tFar) Offer(best, Surface::kBox, tNear, std::fabs(dir[axis]) / length);
}

void OfferPerson(Hit* best, const Vec3& d, double length) {
  double t = 0;
  if (!SphereEntry(d, kPersonBoundCenter, kPersonBoundRadius, &t)) return;
  if (best->surface != Surface::kNone && best->t < t) return;  // hidden behind a nearer hit
  for (const Capsule& capsule : kPersonCapsules)
    OfferCapsule(best, Surface::kPerson, d, length, capsule);
  OfferSphere(best, Surface::kPerson, d, length, kHeadCenter, kHeadRadius);
}

}  // namespace

Vec3 CameraToRoom(const Vec3& d) {
  static const double c = std::cos(kPitch);
  static const double s = std::sin(kPitch);
  return Vec3{d.x, d.y * c + d.z * s, -d.y * s + d.z * c};
}

ScenePose PoseAt(double seconds) {
  const double angle = 2.0 * kPi * seconds / kSpherePeriod;
  return ScenePose{Vec3{-100.0 + 600.0 * std::sin(angle), kFloorY - kSphereRadius,
                        2500.0 + 450.0 * std::cos(angle)}};
}

Hit CastStaticRay(const Vec3& direction) {
  const double length = std::sqrt(Dot(direction, direction));
  Hit best;
  OfferRoom(&best, direction, length);
  OfferBox(&best, direction, length);
  OfferPerson(&best, direction, length);
  best.range = best.t * length;
  return best;
}

Hit AddMovingObjects(const Hit& staticHit, const Vec3& direction, const ScenePose& pose) {
  double t = 0;
  if (!SphereEntry(direction, pose.sphereCenter, kSphereRadius, &t)) return staticHit;
  if (staticHit.surface != Surface::kNone && staticHit.t <= t) return staticHit;
  const double length = std::sqrt(Dot(direction, direction));
  const Vec3& c = pose.sphereCenter;
  const Vec3 normal{t * direction.x - c.x, t * direction.y - c.y, t * direction.z - c.z};
  return Hit{Surface::kSphere, t, std::fabs(Dot(direction, normal)) / (kSphereRadius * length),
             t * length};
}

}  // namespace ZeltoSim
