// EncodeGlb: the JSON chunk that describes the arrays, then the arrays.
#include "glb_writer.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "json_msgpack.h"

namespace zelto_cli {
namespace {

constexpr uint32_t kMagic = 0x46546c67;      // "glTF"
constexpr uint32_t kJsonChunk = 0x4e4f534a;  // "JSON"
constexpr uint32_t kBinChunk = 0x004e4942;   // "BIN\0"
constexpr int kFloat = 5126, kUnsignedByte = 5121, kUnsignedInt = 5125;
constexpr int kArrayBuffer = 34962, kElementArrayBuffer = 34963;

void AppendU32(std::string* bytes, uint32_t value) {
  char raw[4];
  std::memcpy(raw, &value, 4);  // the hosts are little-endian
  bytes->append(raw, 4);
}

// The arrays back to back; every offset is a multiple of 4, as vertex
// attributes must be aligned.
class BinaryBuffer {
 public:
  // Appends `size` bytes and describes them as a buffer view.
  size_t Add(const void* data, size_t size, int target, Json* views) {
    views->push_back(Json{
        {"buffer", 0}, {"byteOffset", bytes_.size()}, {"byteLength", size}, {"target", target}});
    bytes_.append(static_cast<const char*>(data), size);
    return views->size() - 1;
  }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

}  // namespace

std::string EncodeGlb(const Surface& surface) {
  const size_t vertices = surface.VertexCount();
  Json gltf = {{"asset", {{"version", "2.0"}, {"generator", "zelto-mesh"}}}, {"scene", 0}};
  BinaryBuffer buffer;
  if (vertices == 0 || surface.triangles.empty()) {
    gltf["scenes"] = Json::array({Json::object()});  // nothing to show: an empty scene
  } else {
    Json views = Json::array(), accessors = Json::array(), attributes = Json::object();
    const auto accessor = [&](size_t view, int component, size_t count, const char* type) {
      accessors.push_back(Json{
          {"bufferView", view}, {"componentType", component}, {"count", count}, {"type", type}});
      return accessors.size() - 1;
    };
    float low[3], high[3];
    for (int k = 0; k < 3; ++k) {
      low[k] = std::numeric_limits<float>::max();
      high[k] = std::numeric_limits<float>::lowest();
    }
    for (size_t v = 0; v < surface.positions.size(); ++v) {
      low[v % 3] = std::min(low[v % 3], surface.positions[v]);
      high[v % 3] = std::max(high[v % 3], surface.positions[v]);
    }
    attributes["POSITION"] = accessor(
        buffer.Add(surface.positions.data(), 4 * surface.positions.size(), kArrayBuffer, &views),
        kFloat, vertices, "VEC3");
    accessors.back()["min"] = {low[0], low[1], low[2]};
    accessors.back()["max"] = {high[0], high[1], high[2]};
    attributes["NORMAL"] = accessor(
        buffer.Add(surface.normals.data(), 4 * surface.normals.size(), kArrayBuffer, &views),
        kFloat, vertices, "VEC3");
    if (!surface.colors.empty()) {
      // RGBA: a three-byte element would break the 4-byte alignment.
      std::string rgba(4 * vertices, '\xff');
      for (size_t v = 0; v < vertices; ++v) std::memcpy(&rgba[4 * v], &surface.colors[3 * v], 3);
      attributes["COLOR_0"] = accessor(buffer.Add(rgba.data(), rgba.size(), kArrayBuffer, &views),
                                       kUnsignedByte, vertices, "VEC4");
      accessors.back()["normalized"] = true;
    }
    const size_t indices =
        accessor(buffer.Add(surface.triangles.data(), 4 * surface.triangles.size(),
                            kElementArrayBuffer, &views),
                 kUnsignedInt, surface.triangles.size(), "SCALAR");
    gltf["scenes"] = Json::array({Json{{"nodes", {0}}}});
    gltf["nodes"] = Json::array({Json{{"mesh", 0}}});
    gltf["meshes"] = Json::array({Json{
        {"primitives",
         Json::array({Json{{"attributes", attributes}, {"indices", indices}, {"mode", 4}}})}}});
    gltf["buffers"] = Json::array({Json{{"byteLength", buffer.bytes().size()}}});
    gltf["bufferViews"] = views;
    gltf["accessors"] = accessors;
  }

  std::string json = gltf.dump();
  json.append((4 - json.size() % 4) % 4, ' ');
  const std::string& bin = buffer.bytes();  // every part a multiple of 4 long
  const size_t total = 12 + 8 + json.size() + (bin.empty() ? 0 : 8 + bin.size());
  std::string bytes;
  bytes.reserve(total);
  AppendU32(&bytes, kMagic);
  AppendU32(&bytes, 2);
  AppendU32(&bytes, static_cast<uint32_t>(total));
  AppendU32(&bytes, static_cast<uint32_t>(json.size()));
  AppendU32(&bytes, kJsonChunk);
  bytes += json;
  if (!bin.empty()) {
    AppendU32(&bytes, static_cast<uint32_t>(bin.size()));
    AppendU32(&bytes, kBinChunk);
    bytes += bin;
  }
  return bytes;
}

}  // namespace zelto_cli
