// The pieces of zelto-mesh whose faults a run would hide: the MessagePack a
// --set sends and a --get prints, and the PLY bytes of a filtered mesh.
#include <gtest/gtest.h>

#include "json_msgpack.h"
#include "mesh_filter.h"
#include "ply_writer.h"
#include "support/bytes.h"

namespace zelto_cli {
namespace {

using namespace zelto_test;

// Packed as msgpack-c packs the records' fields; rows without `json` are only printed.
TEST(JsonMsgpack, ConvertsBothWays) {
  const std::tuple<const char*, Bytes, const char*> cases[] = {
      {"65536", {0xce, 0x00, 0x01, 0x00, 0x00}, "65536"},
      {"-33", {0xd0, 0xdf}, "-33"},
      {"-129", {0xd1, 0xff, 0x7f}, "-129"},
      {"0.1", F32(0x3dcccccd), "0.1"},  // float 32, printed as its shortest text
      {"525.0", {0xcd, 0x02, 0x0d}, "525"},  // a whole float as msgpack-c packs it
      {R"({"b":[1,true,null],"a":"x"})", Cat({{0x82}, Key("b"), {0x93, 1, 0xc3, 0xc0}, Key("a"),
       Key("x")}), R"({"b":[1,true,null],"a":"x"})"},  // keys in the order written
      {nullptr, {0xcb, 0x3f, 0xb9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9a}, "0.1"},
      {nullptr, {0xcf, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}, "18446744073709551615"},
  };
  for (const auto& [json, bytes, printed] : cases) {
    SCOPED_TRACE(printed);
    EXPECT_EQ(json == nullptr ? bytes : JsonToMsgpack(Json::parse(json)), bytes);
    EXPECT_EQ(MsgpackToJson(bytes.data(), bytes.size()).dump(), printed);
  }
}

// Damaged replies fail before anything is reserved for what they claim.
TEST(JsonMsgpack, RefusesRepliesBeyondTheirBytesOrNestedTooDeep) {
  const Bytes cases[] = {{0xdd, 0xff, 0xff, 0xff, 0xff, 0xc0}, Cat({Bytes(1000000, 0x91), {0xc0}})};
  for (const Bytes& bytes : cases) {
    SCOPED_TRACE(bytes.size());
    EXPECT_THROW(MsgpackToJson(bytes.data(), bytes.size()), std::runtime_error);
  }
}

// The first vertex at the builder's invalid depth takes its triangle along;
// the others keep their order, renumbered, even at depths next to it.
TEST(PlyWriter, WritesTheMeshWithoutTheInvalidVertices) {
  Mesh mesh;
  mesh.vertices = {0, 0, 32001.0f / 1000.0f, 0.5f, 0, 32.0f, 0, 0.5f, 32.002f, 0.5f, 0.5f, 2};
  mesh.triangles = {0, 1, 2, 1, 3, 2};
  const std::string header =
      "ply\nformat binary_little_endian 1.0\ncomment zelto-mesh, metres, camera coordinates\n"
      "element vertex 3\nproperty float x\nproperty float y\nproperty float z\nelement face 1\n"
      "property list uchar int vertex_indices\nend_header\n";
  const Bytes body = LeBytes()
                         .F32Bits({0x3f000000, 0, 0x42000000, 0, 0x3f000000, 0x4200020c, 0x3f000000,
                                   0x3f000000, 0x40000000}).U8(3).I32s({0, 2, 1}).bytes();
  EXPECT_EQ(Hex(Raw(EncodePly(WithoutInvalidDepth(mesh)))), Hex(Cat({Raw(header), body})));
}

}  // namespace
}  // namespace zelto_cli
