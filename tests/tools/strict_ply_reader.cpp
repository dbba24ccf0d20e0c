#include "strict_ply_reader.h"

#include <charconv>
#include <cstring>

namespace ZeltoCliTest {
namespace {

// Reads the next '\n'-terminated line; false at the end of the bytes.
bool NextLine(const std::string& bytes, size_t* position, std::string* line) {
  const size_t end = bytes.find('\n', *position);
  if (end == std::string::npos) return false;
  *line = bytes.substr(*position, end - *position);
  *position = end + 1;
  return true;
}

bool ParseCount(const std::string& line, const std::string& prefix, int64_t* count) {
  if (line.compare(0, prefix.size(), prefix) != 0) return false;
  const char* first = line.data() + prefix.size();
  const char* last = line.data() + line.size();
  const auto result = std::from_chars(first, last, *count);
  return result.ec == std::errc() && result.ptr == last && first != last && *count >= 0;
}

}  // namespace

bool ReadStrictPly(const std::string& bytes, PlyMesh* mesh, std::string* error) {
  size_t position = 0;
  std::string line;
  const auto expect = [&](const std::string& wanted) {
    if (!NextLine(bytes, &position, &line) || line != wanted) {
      *error = "expected '" + wanted + "', found '" + line + "'";
      return false;
    }
    return true;
  };
  if (!expect("ply") || !expect("format binary_little_endian 1.0")) return false;

  // Comments may appear only before the first element.
  while (NextLine(bytes, &position, &line) && line.compare(0, 8, "comment ") == 0) {
    mesh->comments.push_back(line.substr(8));
  }
  int64_t vertex_count = 0;
  if (!ParseCount(line, "element vertex ", &vertex_count)) {
    *error = "expected 'element vertex N', found '" + line + "'";
    return false;
  }
  if (!expect("property float x") || !expect("property float y") || !expect("property float z")) {
    return false;
  }
  int64_t face_count = 0;
  if (!NextLine(bytes, &position, &line) || !ParseCount(line, "element face ", &face_count)) {
    *error = "expected 'element face N', found '" + line + "'";
    return false;
  }
  if (!expect("property list uchar int vertex_indices") || !expect("end_header")) return false;

  const size_t expected_size = position + 12 * static_cast<size_t>(vertex_count) +
                               13 * static_cast<size_t>(face_count);
  if (bytes.size() != expected_size) {
    *error = "body of " + std::to_string(bytes.size() - position) + " bytes, expected " +
             std::to_string(expected_size - position) + " for " + std::to_string(vertex_count) +
             " vertices and " + std::to_string(face_count) + " triangles";
    return false;
  }
  mesh->vertices.resize(3 * static_cast<size_t>(vertex_count));
  if (vertex_count > 0) {  // data() of an empty vector may be null
    std::memcpy(mesh->vertices.data(), bytes.data() + position,
                12 * static_cast<size_t>(vertex_count));
  }
  position += 12 * static_cast<size_t>(vertex_count);
  mesh->triangles.clear();
  for (int64_t face = 0; face < face_count; ++face) {
    if (static_cast<uint8_t>(bytes[position]) != 3) {
      *error = "face " + std::to_string(face) + " has " +
               std::to_string(static_cast<uint8_t>(bytes[position])) + " corners";
      return false;
    }
    for (int k = 0; k < 3; ++k) {
      int32_t index = 0;
      std::memcpy(&index, bytes.data() + position + 1 + 4 * k, 4);
      if (index < 0 || index >= vertex_count) {
        *error = "face " + std::to_string(face) + " has index " + std::to_string(index) +
                 " outside 0.." + std::to_string(vertex_count - 1);
        return false;
      }
      mesh->triangles.push_back(index);
    }
    position += 13;
  }
  return true;
}

}  // namespace ZeltoCliTest
