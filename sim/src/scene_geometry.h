// Ray casting against the synthetic scene's primitives (millimetres, the
// room frame: x right, y down, z forward; the camera sits at the origin).
#pragma once

#include <cstdint>

namespace ZeltoSim {

struct Vec3 {
  double x = 0;
  double y = 0;
  double z = 0;
};

enum class Surface : uint8_t { kNone, kFloor, kCeiling, kWall, kBox, kSphere, kPerson };

struct Hit {
  Surface surface = Surface::kNone;
  double t = 0;          // ray parameter: the hit is origin + t * direction
  double cosine = 0;     // |cos| between the ray and the surface normal
  double range = 0;      // distance from the camera (t * |direction|)
};

// What moves: computed once per frame, not once per ray.
struct ScenePose {
  Vec3 sphereCenter;
};
ScenePose PoseAt(double seconds);

// The first surface of the still scene (room, box, person) along
// `direction` (any length) from the camera; the same for every frame.
Hit CastStaticRay(const Vec3& direction);
// The first surface once the moving sphere of `pose` is added.
Hit AddMovingObjects(const Hit& staticHit, const Vec3& direction, const ScenePose& pose);

// Rotates a depth-camera direction into the room frame (the camera looks
// 15 degrees down).
Vec3 CameraToRoom(const Vec3& direction);

}  // namespace ZeltoSim
