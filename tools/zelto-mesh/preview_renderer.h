// A shaded picture of a mesh, as the camera saw it or from the side.
#pragma once

#include "image.h"
#include "mesh.h"

namespace zelto_cli {

// camera: through the camera centre; side: from a viewpoint turned 55
// degrees about the vertical axis through the scene's centre and 20 degrees
// above it, where the triangles that bridge depth jumps show as sheets.
enum class PreviewView { kCamera, kSide };

// Projects the valid vertices through the view's centre (x/z, y/z), fits
// that view into `width` x `height` keeping its aspect, and rasterizes the
// triangles with a z-buffer and Lambert shading under a light at the
// viewpoint, from vertex normals averaged over the face normals around
// them; the vertex colours tint the surface when the mesh has them.
// Triangles that touch the invalid depth are not drawn. An empty mesh gives
// the background only.
Image RenderPreview(const Mesh& mesh, int width, int height,
                    PreviewView view = PreviewView::kCamera);

}  // namespace zelto_cli
