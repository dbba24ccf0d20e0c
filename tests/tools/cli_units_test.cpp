// The pieces of zelto-mesh whose faults a run would hide: the MessagePack a
// --set sends, the PLY bytes, and the mesh bytes it refuses to read.
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

#include "json_msgpack.h"
#include "mesh/mesh_frame_data.h"
#include "mesh_decoding.h"
#include "mesh_filter.h"
#include "ply_writer.h"
#include "support/bytes.h"

namespace zelto_cli {
namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::Key;

// Packed as msgpack-c packs the records' fields, so that a --set reaches the
// source in the bytes a client library would send.
TEST(JsonMsgpack, ConvertsBothWays) {
  struct Case {
    const char* json;
    Bytes bytes;
    const char* back;  // the JSON the bytes print as
  };
  const Case cases[] = {
      {"127", {0x7f}, "127"},
      {"128", {0xcc, 0x80}, "128"},
      {"256", {0xcd, 0x01, 0x00}, "256"},
      {"65536", {0xce, 0x00, 0x01, 0x00, 0x00}, "65536"},
      {"4294967296", {0xcf, 0, 0, 0, 1, 0, 0, 0, 0}, "4294967296"},
      {"-32", {0xe0}, "-32"},
      {"-33", {0xd0, 0xdf}, "-33"},
      {"-129", {0xd1, 0xff, 0x7f}, "-129"},
      {"-32769", {0xd2, 0xff, 0xff, 0x7f, 0xff}, "-32769"},
      {"0.1", {0xca, 0x3d, 0xcc, 0xcc, 0xcd}, "0.1"},  // float 32, printed shortest
      {"-2.5", {0xca, 0xc0, 0x20, 0x00, 0x00}, "-2.5"},
      {"525.0", {0xcd, 0x02, 0x0d}, "525"},  // whole floats as msgpack-c packs them
      {"-3.0", {0xfd}, "-3"},
      {"[true,false,null]", {0x93, 0xc3, 0xc2, 0xc0}, "[true,false,null]"},
      {R"({"b":1,"a":"xy"})", Cat({{0x82}, Key("b"), {0x01}, Key("a"), Key("xy")}),
       R"({"b":1,"a":"xy"})"},  // keys in the order written
      {nullptr, {0xcb, 0x3f, 0xb9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9a}, "0.1"},
      {nullptr, Cat({{0x81}, Key("c"), {0x81, 0x00, 0x81}, Key("d"), {0x01}}),
       R"({"c":{"0":{"d":1}}})"},  // channel numbers as keys
      {nullptr, {0xcf, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}, "18446744073709551615"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.back);
    if (row.json != nullptr) {
      EXPECT_EQ(JsonToMsgpack(Json::parse(row.json)), row.bytes);
    }
    EXPECT_EQ(MsgpackToJson(row.bytes.data(), row.bytes.size()).dump(), row.back);
  }
  for (const Bytes& malformed : {Bytes{0x82, 0xa1, 'a'}, Bytes{0xc1}}) {
    try {
      MsgpackToJson(malformed.data(), malformed.size());
      ADD_FAILURE() << zelto_test::Hex(malformed) << " decoded";
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(std::string(error.what()).rfind("malformed MessagePack: ", 0), 0u) << error.what();
    }
  }
}

// Two triangles over four vertices, the first vertex at the builder's invalid
// depth: its triangle goes, the other vertices keep their order, renumbered.
TEST(PlyWriter, WritesTheMeshWithoutTheInvalidVertices) {
  Mesh mesh;
  mesh.vertices = {0, 0, 32001.0f / 1000.0f, 0.5f, 0, 32.0f, 0, 0.5f, 32.002f, 0.5f, 0.5f, 2};
  mesh.triangles = {0, 1, 2, 1, 3, 2};
  const Bytes body = zelto_test::LeBytes()
                         .F32Bits({0x3f000000, 0, 0x42000000, 0, 0x3f000000, 0x4200020c,
                                   0x3f000000, 0x3f000000, 0x40000000})
                         .U8(3)
                         .I32s({0, 2, 1})
                         .bytes();
  const std::string header =
      "ply\nformat binary_little_endian 1.0\ncomment zelto-mesh, metres, camera coordinates\n"
      "element vertex 3\nproperty float x\nproperty float y\nproperty float z\nelement face 1\n"
      "property list uchar int vertex_indices\nend_header\n";
  EXPECT_EQ(zelto_test::Hex(zelto_test::Raw(EncodePly(WithoutInvalidDepth(mesh)))),
            zelto_test::Hex(Cat({zelto_test::Raw(header), body})));
}

TEST(MeshDecoding, RefusesBytesThatAreNeitherLayout) {
  ZeltoMesh::MeshFrameData null_vertices;
  null_vertices.vertexCount = 3;
  Bytes reference(sizeof null_vertices);
  std::memcpy(reference.data(), &null_vertices, sizeof null_vertices);
  const Bytes flat = zelto_test::LeBytes().I32(1).F32Bits({0, 0, 0}).I32(0).U8(1).bytes();
  struct Case {
    Bytes bytes;
    const char* error;
  };
  const Case cases[] = {
      {Cat({flat, {0}}), "flat layout of 22 bytes: counts do not match the size"},
      {Bytes(flat.begin(), flat.end() - 1), "flat layout of 20 bytes: vertex count exceeds the size"},
      {Bytes(8), "flat layout of 8 bytes: shorter than two counts and a flag"},
      {reference, "reference layout with a null array"},
  };
  Mesh mesh;
  std::string error;
  ASSERT_TRUE(DecodeMesh(flat.data(), flat.size(), &mesh, &error)) << error;
  for (const Case& row : cases) {
    SCOPED_TRACE(row.error);
    EXPECT_FALSE(DecodeMesh(row.bytes.data(), row.bytes.size(), &mesh, &error));
    EXPECT_EQ(error, row.error);
  }
  EXPECT_FALSE(DecodeMesh(nullptr, 0, &mesh, &error));
  EXPECT_EQ(error, "channel 0 has no data");
}

}  // namespace
}  // namespace zelto_cli
