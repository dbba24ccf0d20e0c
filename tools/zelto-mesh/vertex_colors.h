// Vertex colours from a recording's colour images, through the calibration
// the mesh source uses to put depth points on colour-camera masks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "mesh.h"
#include "zelto_sim/recording.h"

namespace zelto_cli {

// Vertices that land outside the colour image, and every vertex of a frame
// without a colour image, get this grey.
constexpr uint8_t kNoColor = 128;

// The frame of `recording` captured at `timestamp`: the first match from
// `from` on (frames are delivered in order, so the next one is usually it),
// then from the start. Empty when no frame has that time.
std::optional<size_t> FrameAtTimestamp(const ZeltoSim::Recording& recording, uint64_t timestamp,
                                       size_t from);

// Fills mesh->colors with red, green, blue per vertex from frame `index`'s
// colour image, each vertex taking the pixel the mesh source would map it to
// for a colour mask: rotation by the inverse of the calibration's R (the
// translation is not applied), the colour intrinsics, truncation toward zero
// (no interpolation, so a vertex's colour is one the camera saw). Leaves the
// colours empty when the recording has no colour images. False with `error`
// set when the image cannot be read.
bool ColorizeMesh(const ZeltoSim::Recording& recording, size_t index, Mesh* mesh,
                  std::string* error);

}  // namespace zelto_cli
