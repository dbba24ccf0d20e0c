// MakeSurface: clean, flip, normals, axes.
#include "surface.h"

#include <cmath>
#include <utility>

namespace zelto_cli {
namespace {

// The sum of the cross products of the faces around each vertex: each is
// twice its face's area long, so larger faces weigh more.
std::vector<double> AreaWeightedNormals(const std::vector<float>& positions,
                                        const std::vector<int32_t>& triangles) {
  std::vector<double> sums(positions.size(), 0.0);
  const auto at = [&positions](int32_t index, int k) {
    return static_cast<double>(positions[3 * static_cast<size_t>(index) + k]);
  };
  for (size_t t = 0; t + 2 < triangles.size(); t += 3) {
    const int32_t a = triangles[t], b = triangles[t + 1], c = triangles[t + 2];
    double u[3], v[3];
    for (int k = 0; k < 3; ++k) {
      u[k] = at(b, k) - at(a, k);
      v[k] = at(c, k) - at(a, k);
    }
    const double n[3] = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2],
                         u[0] * v[1] - u[1] * v[0]};
    for (const int32_t corner : {a, b, c}) {
      for (int k = 0; k < 3; ++k) sums[3 * static_cast<size_t>(corner) + k] += n[k];
    }
  }
  return sums;
}

}  // namespace

const char* AxesName(Axes axes) { return axes == Axes::kCamera ? "camera" : "opengl"; }

Surface MakeSurface(const Mesh& mesh, const MeshCleaning& cleaning, Axes axes) {
  Mesh clean = CleanMesh(mesh, cleaning);
  Surface surface;
  surface.positions = std::move(clean.vertices);
  surface.colors = std::move(clean.colors);
  surface.triangles = std::move(clean.triangles);
  for (size_t t = 0; t + 2 < surface.triangles.size(); t += 3) {
    std::swap(surface.triangles[t + 1], surface.triangles[t + 2]);
  }

  const std::vector<double> sums = AreaWeightedNormals(surface.positions, surface.triangles);
  surface.normals.resize(sums.size());
  for (size_t v = 0; v < sums.size(); v += 3) {
    double n[3] = {sums[v], sums[v + 1], sums[v + 2]};
    double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    if (!(length > 0)) {
      // No face with an area around it (or none at all): face the camera.
      for (int k = 0; k < 3; ++k) n[k] = -static_cast<double>(surface.positions[v + k]);
      length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    }
    for (int k = 0; k < 3; ++k) {
      surface.normals[v + k] = length > 0 ? static_cast<float>(n[k] / length) : 0.0f;
    }
  }

  if (axes == Axes::kOpenGl) {
    for (std::vector<float>* values : {&surface.positions, &surface.normals}) {
      for (size_t v = 0; v < values->size(); v += 3) {
        (*values)[v + 1] = -(*values)[v + 1];
        (*values)[v + 2] = -(*values)[v + 2];
      }
    }
  }
  return surface;
}

}  // namespace zelto_cli
