// EncodeObj: text a viewer reads back into exactly the delivered floats.
#include "obj_writer.h"

#include <charconv>

namespace zelto_cli {
namespace {

// Shortest text that reads back as the same float.
void AppendFloat(std::string* text, float value) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  text->append(buffer, result.ptr);
}

}  // namespace

std::string EncodeObj(const Mesh& mesh) {
  std::string text = "# zelto-mesh, metres, camera coordinates\n";
  text.reserve(text.size() + 30 * static_cast<size_t>(mesh.VertexCount()) +
               24 * static_cast<size_t>(mesh.TriangleCount()));
  for (size_t v = 0; v + 2 < mesh.vertices.size(); v += 3) {
    text += "v ";
    AppendFloat(&text, mesh.vertices[v]);
    text += ' ';
    AppendFloat(&text, mesh.vertices[v + 1]);
    text += ' ';
    AppendFloat(&text, mesh.vertices[v + 2]);
    text += '\n';
  }
  for (size_t t = 0; t + 2 < mesh.triangles.size(); t += 3) {
    text += "f " + std::to_string(int64_t{mesh.triangles[t]} + 1) + ' ' +
            std::to_string(int64_t{mesh.triangles[t + 1]} + 1) + ' ' +
            std::to_string(int64_t{mesh.triangles[t + 2]} + 1) + '\n';
  }
  return text;
}

}  // namespace zelto_cli
