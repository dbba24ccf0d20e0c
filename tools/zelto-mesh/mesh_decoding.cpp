// DecodeMesh: the flat bytes read field by field, the reference record's
// arrays copied out while they are still valid; ViewMesh without the copy.
#include "mesh_decoding.h"

#include <cstring>

#include "mesh/mesh_frame_data.h"

namespace zelto_cli {
namespace {

// memcpy with a null pointer is undefined even for 0 bytes, and an empty
// vector's data() may be null.
void CopyBytes(void* destination, const void* source, size_t count) {
  if (count > 0) std::memcpy(destination, source, count);
}

template <typename T>
T Load(const uint8_t* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

bool ViewReference(const uint8_t* bytes, MeshView* view, std::string* error) {
  const auto record = Load<ZeltoMesh::MeshFrameData>(bytes);
  if (record.vertexCount < 0 || record.triangleCount < 0) {
    *error = "reference layout with a negative count";
    return false;
  }
  if ((record.vertexCount > 0 && record.vertices == nullptr) ||
      (record.triangleCount > 0 && record.triangles == nullptr)) {
    *error = "reference layout with a null array";
    return false;
  }
  view->layout = MeshLayout::kReference;
  view->vertexCount = record.vertexCount;
  view->triangleCount = record.triangleCount;
  view->resetTriangle = record.resetTriangle != 0;
  view->vertexBytes = reinterpret_cast<const uint8_t*>(record.vertices);
  view->triangleBytes = reinterpret_cast<const uint8_t*>(record.triangles);
  return true;
}

bool ViewFlat(const uint8_t* bytes, size_t size, MeshView* view, std::string* error) {
  const auto fail = [&](const char* what) {
    *error = std::string("flat layout of ") + std::to_string(size) + " bytes: " + what;
    return false;
  };
  if (size < 9) return fail("shorter than two counts and a flag");
  const int32_t vertex_count = Load<int32_t>(bytes);
  if (vertex_count < 0) return fail("negative vertex count");
  const size_t vertex_bytes = 12 * static_cast<size_t>(vertex_count);
  if (vertex_bytes + 9 > size) return fail("vertex count exceeds the size");
  const int32_t triangle_count = Load<int32_t>(bytes + 4 + vertex_bytes);
  if (triangle_count < 0) return fail("negative triangle count");
  const size_t index_bytes = 12 * static_cast<size_t>(triangle_count);
  if (vertex_bytes + index_bytes + 9 != size) return fail("counts do not match the size");

  view->layout = MeshLayout::kFlat;
  view->vertexCount = vertex_count;
  view->triangleCount = triangle_count;
  view->resetTriangle = bytes[8 + vertex_bytes + index_bytes] != 0;
  view->vertexBytes = bytes + 4;
  view->triangleBytes = bytes + 8 + vertex_bytes;
  return true;
}

}  // namespace

const char* LayoutName(MeshLayout layout) {
  return layout == MeshLayout::kFlat ? "flat" : "reference";
}

bool ViewMesh(const uint8_t* bytes, size_t size, MeshView* view, std::string* error) {
  if (bytes == nullptr) {
    *error = "channel 0 has no data";
    return false;
  }
  if (size == kReferenceLayoutSize) return ViewReference(bytes, view, error);
  return ViewFlat(bytes, size, view, error);
}

void CopyMesh(const MeshView& view, Mesh* mesh) {
  mesh->vertices.resize(3 * static_cast<size_t>(view.vertexCount));
  CopyBytes(mesh->vertices.data(), view.vertexBytes, 12 * static_cast<size_t>(view.vertexCount));
  mesh->triangles.resize(3 * static_cast<size_t>(view.triangleCount));
  CopyBytes(mesh->triangles.data(), view.triangleBytes,
            12 * static_cast<size_t>(view.triangleCount));
  mesh->colors.clear();
  mesh->resetTriangle = view.resetTriangle;
  mesh->layout = view.layout;
}

bool DecodeMesh(const uint8_t* bytes, size_t size, Mesh* mesh, std::string* error) {
  MeshView view;
  if (!ViewMesh(bytes, size, &view, error)) return false;
  CopyMesh(view, mesh);
  return true;
}

}  // namespace zelto_cli
