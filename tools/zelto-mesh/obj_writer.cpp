// EncodeObj: text a viewer reads back into exactly the written floats.
#include "obj_writer.h"

#include <charconv>

namespace zelto_cli {
namespace {

// Shortest text that reads back as the same float.
void AppendFloats(std::string* text, const char* tag, const float* values) {
  *text += tag;
  for (int k = 0; k < 3; ++k) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, values[k]);
    *text += ' ';
    text->append(buffer, result.ptr);
  }
}

}  // namespace

std::string EncodeObj(const Surface& surface, Axes axes) {
  std::string text = "# zelto-mesh, metres, " + std::string(AxesName(axes)) + " axes\n";
  text.reserve(text.size() + 80 * surface.VertexCount() + 40 * surface.TriangleCount());
  for (size_t v = 0; v < surface.VertexCount(); ++v) {
    AppendFloats(&text, "v", &surface.positions[3 * v]);
    if (!surface.colors.empty()) {
      const float rgb[3] = {surface.colors[3 * v] / 255.0f, surface.colors[3 * v + 1] / 255.0f,
                            surface.colors[3 * v + 2] / 255.0f};
      AppendFloats(&text, "", rgb);
    }
    text += '\n';
  }
  for (size_t v = 0; v < surface.VertexCount(); ++v) {
    AppendFloats(&text, "vn", &surface.normals[3 * v]);
    text += '\n';
  }
  for (size_t t = 0; t < surface.triangles.size(); t += 3) {
    text += 'f';
    for (size_t k = 0; k < 3; ++k) {
      const std::string index = std::to_string(int64_t{surface.triangles[t + k]} + 1);
      text += ' ' + index + "//" + index;
    }
    text += '\n';
  }
  return text;
}

}  // namespace zelto_cli
