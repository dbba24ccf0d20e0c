// A shaded picture of a mesh as the camera saw it.
#pragma once

#include "image.h"
#include "mesh.h"

namespace zelto_cli {

// Projects the valid vertices through the camera centre (x/z, y/z), fits
// that view into `width` x `height` keeping its aspect, and rasterizes the
// triangles with a z-buffer and Lambert shading under a light at the
// camera, from vertex normals averaged over the face normals around them. Triangles that touch the invalid depth are
// not drawn. An empty mesh gives the background only.
Image RenderPreview(const Mesh& mesh, int width, int height);

}  // namespace zelto_cli
