// Vertex colours through the mesh source's own colour mapping
// (masking/point_mapping.h). Built with -ffp-contract=off like the source, so
// that a vertex on the edge of a pixel lands where the source's mask lookup
// would.
#include "vertex_colors.h"

#include <algorithm>

#include "masking/point_mapping.h"

namespace zelto_cli {

std::optional<size_t> FrameAtTimestamp(const ZeltoSim::Recording& recording, uint64_t timestamp,
                                       size_t from) {
  const std::vector<uint64_t>& times = recording.timestamps;
  from = std::min(from, times.size());
  auto found = std::find(times.begin() + static_cast<std::ptrdiff_t>(from), times.end(), timestamp);
  if (found == times.end()) found = std::find(times.begin(), times.end(), timestamp);
  if (found == times.end()) return std::nullopt;
  return static_cast<size_t>(found - times.begin());
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
  float inverse[9];
  Zelto::InvertRotation(recording.calibration.R, inverse);
  const Zelto::ColorLens<float> lens = Zelto::MakeColorLens<float>(recording.calibration, inverse);
  const std::vector<float>& v = mesh->vertices;
  for (size_t i = 0; i + 2 < v.size(); i += 3) {
    const Zelto::Pixels<float> pixel = Zelto::MapToColor(lens, v[i], v[i + 1], v[i + 2]);
    if (pixel.u < 0.0f) continue;  // off the colour image
    const size_t at =
        (static_cast<size_t>(pixel.v) * image.width + static_cast<size_t>(pixel.u)) * 3;
    std::copy_n(&image.rgb[at], 3, &mesh->colors[i]);
  }
  return true;
}

}  // namespace zelto_cli
