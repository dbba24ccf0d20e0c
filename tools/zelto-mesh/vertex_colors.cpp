// Built with -ffp-contract=off like the mesh source, so that the mapping
// rounds at the same steps as the source's own and a vertex on the edge of a
// pixel lands where the source's mask lookup would.
#include "vertex_colors.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zelto_cli {
namespace {

// The mesh source's float-to-integer rule: toward zero, saturating, NaN as 0
// (a vertex at the camera's centre projects to NaN).
int32_t TruncateToInt32(float value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483648.0f) return std::numeric_limits<int32_t>::max();
  if (value < -2147483648.0f) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(value);
}

// R's inverse as adjugate over determinant, in the mesh source's order of
// operations (an uncalibrated zero matrix gives NaN and maps nothing).
void InverseRotation(const ZeltoTof::Matrix_& r, float m[9]) {
  const float det = r.a * (r.e * r.i - r.f * r.h) - r.b * (r.d * r.i - r.f * r.g) +
                    r.c * (r.d * r.h - r.e * r.g);
  m[0] = (r.e * r.i - r.f * r.h) / det;
  m[1] = (r.c * r.h - r.b * r.i) / det;
  m[2] = (r.b * r.f - r.c * r.e) / det;
  m[3] = (r.f * r.g - r.d * r.i) / det;
  m[4] = (r.a * r.i - r.c * r.g) / det;
  m[5] = (r.c * r.d - r.a * r.f) / det;
  m[6] = (r.d * r.h - r.e * r.g) / det;
  m[7] = (r.b * r.g - r.a * r.h) / det;
  m[8] = (r.a * r.e - r.b * r.d) / det;
}

}  // namespace

std::optional<size_t> FrameAtTimestamp(const ZeltoSim::Recording& recording, uint64_t timestamp,
                                       size_t from) {
  const std::vector<uint64_t>& times = recording.timestamps;
  from = std::min(from, times.size());
  auto found = std::find(times.begin() + static_cast<std::ptrdiff_t>(from), times.end(), timestamp);
  if (found == times.end()) found = std::find(times.begin(), times.end(), timestamp);
  if (found == times.end()) return std::nullopt;
  return static_cast<size_t>(found - times.begin());
}

std::optional<std::pair<int32_t, int32_t>> ColorPixel(
    const ZeltoTof::ZeltoTofCalibrationSettingsProperty_& calibration, const float point[3]) {
  float m[9];
  InverseRotation(calibration.R, m);
  const float qx = m[0] * point[0] + m[1] * point[1] + m[2] * point[2];
  const float qy = m[3] * point[0] + m[4] * point[1] + m[5] * point[2];
  const float qz = m[6] * point[0] + m[7] * point[1] + m[8] * point[2];
  const ZeltoTof::InternalParameter_& c = calibration.c;
  const int32_t u = TruncateToInt32(c.cx + (qx * c.fx) / qz);
  const int32_t v = TruncateToInt32(c.cy + (qy * c.fy) / qz);
  if (u < 0 || static_cast<float>(u) >= static_cast<float>(calibration.colorWidth) || v < 0 ||
      static_cast<float>(v) >= static_cast<float>(calibration.colorHeight)) {
    return std::nullopt;
  }
  return std::make_pair(u, v);
}

bool ColorizeMesh(const ZeltoSim::Recording& recording, size_t index, Mesh* mesh,
                  std::string* error) {
  mesh->colors.clear();
  if (recording.colorFiles.empty()) return true;
  mesh->colors.assign(mesh->vertices.size(), kNoColor);
  if (index >= recording.colorFiles.size() || recording.colorFiles[index].empty()) return true;
  ZeltoSim::ColorImage image;
  const weftcore::Status status = ZeltoSim::ReadColorFrame(recording, index, &image);
  if (status.IsError()) {
    *error = status.message();
    return false;
  }
  for (size_t i = 0; i + 2 < mesh->vertices.size(); i += 3) {
    const auto pixel = ColorPixel(recording.calibration, &mesh->vertices[i]);
    if (!pixel) continue;
    const size_t at = (static_cast<size_t>(pixel->second) * image.width + pixel->first) * 3;
    std::copy_n(&image.rgb[at], 3, &mesh->colors[i]);
  }
  return true;
}

}  // namespace zelto_cli
