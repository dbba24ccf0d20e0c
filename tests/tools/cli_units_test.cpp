// The pieces of zelto-mesh whose faults a run would hide: the MessagePack a
// --set sends and a --get prints, the cleaning of a mesh, the surface the
// files hold, the files read back, the progress line, the colour a vertex takes.
#include <gtest/gtest.h>

#include <tiny_gltf.h>

#include <cmath>
#include <sstream>

#include "file_io.h"
#include "glb_writer.h"
#include "json_msgpack.h"
#include "obj_writer.h"
#include "ply_writer.h"
#include "progress_bar.h"
#include "strict_ply_reader.h"
#include "support/bytes.h"
#include "surface.h"
#include "vertex_colors.h"

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

// A 3 x 2 grid in the builder's order: cell 0 at about 1 m, cell 1 a skirt
// to a wall at 2 m; vertex 4 is 2 % deeper than its neighbours.
Mesh SkirtGrid() {
  Mesh mesh;
  mesh.vertices = {0, 0, 1, 0.01f, 0, 1, 0.02f, 0, 2, 0, 0.01f, 1, 0.01f, 0.01f, 1.02f, 0.02f, 0.01f, 2};
  mesh.triangles = {0, 1, 3, 1, 4, 3, 1, 2, 4, 2, 5, 4};
  for (uint8_t v = 0; v < 6; ++v) mesh.colors.insert(mesh.colors.end(), {v, uint8_t(10 * v), 200});
  return mesh;
}

TEST(CleanMesh, DropsSkirtsAndInvalidVerticesAndKeepsColoursWithTheirVertices) {
  const std::tuple<const char*, MeshCleaning, bool, std::vector<int32_t>, std::vector<int>> cases[] = {
      {"default", {}, false, {0, 1, 2, 1, 3, 2}, {0, 1, 3, 4}},
      {"tight", {false, 0.01f}, false, {0, 1, 2}, {0, 1, 3}},
      {"off", {false, std::nullopt}, false, {0, 1, 3, 1, 4, 3, 1, 2, 4, 2, 5, 4}, {0, 1, 2, 3, 4, 5}},
      {"invalid", {false, std::nullopt}, true, {0, 1, 3, 1, 4, 3, 1, 2, 4}, {0, 1, 2, 3, 4}},
      {"as delivered", {true, std::nullopt}, true, {0, 1, 3, 1, 4, 3, 1, 2, 4, 2, 5, 4}, {0, 1, 2, 3, 4, 5}},
      {"invalid jumps", {true, 0.05f}, true, {0, 1, 3, 1, 4, 3}, {0, 1, 2, 3, 4, 5}},
  };
  for (const auto& [name, cleaning, invalid, triangles, kept] : cases) {
    SCOPED_TRACE(name);
    Mesh mesh = SkirtGrid();
    if (invalid) mesh.vertices[17] = kInvalidDepthMetres;
    const Mesh clean = CleanMesh(mesh, cleaning);
    EXPECT_EQ(clean.triangles, triangles);
    std::vector<float> vertices;
    std::vector<uint8_t> colors;
    for (const int v : kept) {
      vertices.insert(vertices.end(), &mesh.vertices[3 * v], &mesh.vertices[3 * v + 3]);
      colors.insert(colors.end(), &mesh.colors[3 * v], &mesh.colors[3 * v + 3]);
    }
    EXPECT_EQ(clean.vertices, vertices);
    EXPECT_EQ(clean.colors, colors);
  }
}

// Faces turn counter-clockwise as the camera sees them (negative area in
// image coordinates, y down), normals point at it; OpenGL axes are a half
// turn of the same surface.
TEST(MakeSurface, FacesTheCameraInBothAxes) {
  const Surface camera = MakeSurface(SkirtGrid(), {}, Axes::kCamera);
  const Surface opengl = MakeSurface(SkirtGrid(), {}, Axes::kOpenGl);
  const auto image = [&](int32_t v, int k) { return camera.positions[3 * v + k] / camera.positions[3 * v + 2]; };
  for (size_t t = 0; t < camera.triangles.size(); t += 3) {
    const int32_t a = camera.triangles[t], b = camera.triangles[t + 1], c = camera.triangles[t + 2];
    EXPECT_LT((image(b, 0) - image(a, 0)) * (image(c, 1) - image(a, 1)) -
                  (image(b, 1) - image(a, 1)) * (image(c, 0) - image(a, 0)), 0) << t;
  }
  ASSERT_EQ(camera.normals.size(), camera.positions.size());
  for (size_t v = 0; v < camera.positions.size(); v += 3) {
    const float* n = &camera.normals[v];
    const float* p = &camera.positions[v];
    EXPECT_NEAR(n[0] * n[0] + n[1] * n[1] + n[2] * n[2], 1, 1e-6) << v;
    EXPECT_LT(n[0] * p[0] + n[1] * p[1] + n[2] * p[2], 0) << v;
    EXPECT_TRUE(opengl.positions[v] == p[0] && opengl.positions[v + 1] == -p[1] &&
                opengl.positions[v + 2] == -p[2] && opengl.normals[v] == n[0] &&
                opengl.normals[v + 1] == -n[1] && opengl.normals[v + 2] == -n[2]) << v;
  }
  EXPECT_EQ(opengl.triangles, camera.triangles);
  EXPECT_EQ(opengl.colors, camera.colors);
}

// Each format read back by a reader that is not its writer: the strict PLY
// reader, a few lines of OBJ parsing, and the glTF loader of tinygltf.
TEST(Writers, EveryFormatReadsBackAsTheSurface) {
  const Surface surface = MakeSurface(SkirtGrid(), {false, std::nullopt}, Axes::kOpenGl);
  const std::string path = ZeltoCliTest::FreshDirectory("ply") + "/units.ply";
  std::string error;
  ASSERT_TRUE(WriteFile(path, EncodePly(surface, Axes::kOpenGl), &error)) << error;
  const ZeltoCliTest::PlyMesh ply = ZeltoCliTest::ReadPly(path);
  EXPECT_TRUE(ply.vertices == surface.positions && ply.normals == surface.normals &&
              ply.colors == surface.colors && ply.triangles == surface.triangles);

  Surface obj;
  std::istringstream text(EncodeObj(surface, Axes::kOpenGl));
  for (std::string tag, line; text >> tag && std::getline(text, line);) {
    std::istringstream fields(line);
    float value = 0;
    if (tag == "v") {
      for (int k = 0; k < 6 && fields >> value; ++k) {
        if (k < 3) obj.positions.push_back(value);
        else obj.colors.push_back(static_cast<uint8_t>(std::lround(value * 255)));
      }
    }
    for (float n[3]; tag == "vn" && fields >> n[0] >> n[1] >> n[2];) obj.normals.insert(obj.normals.end(), n, n + 3);
    for (int32_t a, b; tag == "f" && fields >> a && fields.ignore(2) >> b && a == b;) obj.triangles.push_back(a - 1);
  }
  EXPECT_TRUE(obj.positions == surface.positions && obj.normals == surface.normals &&
              obj.colors == surface.colors && obj.triangles == surface.triangles);

  tinygltf::Model model;
  std::string warning;
  const std::string glb = EncodeGlb(surface);
  ASSERT_TRUE(tinygltf::TinyGLTF().LoadBinaryFromMemory(
      &model, &error, &warning, reinterpret_cast<const unsigned char*>(glb.data()),
      static_cast<unsigned>(glb.size()))) << error;
  EXPECT_EQ(error + warning, "");
  const tinygltf::Primitive& primitive = model.meshes.at(0).primitives.at(0);
  const auto bytes = [&](int index, int component, int type) {
    const tinygltf::Accessor& accessor = model.accessors.at(static_cast<size_t>(index));
    EXPECT_TRUE(accessor.componentType == component && accessor.type == type);
    const tinygltf::BufferView& view = model.bufferViews.at(static_cast<size_t>(accessor.bufferView));
    const size_t size = accessor.count * static_cast<size_t>(tinygltf::GetComponentSizeInBytes(component) *
                                                              tinygltf::GetNumComponentsInType(type));
    EXPECT_EQ(view.byteLength, size);
    const auto* first = model.buffers.at(0).data.data() + view.byteOffset + accessor.byteOffset;
    return std::string(first, first + size);
  };
  const auto as_bytes = [](const auto& values) {
    return std::string(reinterpret_cast<const char*>(values.data()), sizeof values[0] * values.size());
  };
  const tinygltf::Accessor& position = model.accessors.at(static_cast<size_t>(primitive.attributes.at("POSITION")));
  EXPECT_EQ(position.minValues, (std::vector<double>{0, -0.01f, -2}));
  EXPECT_EQ(position.maxValues, (std::vector<double>{0.02f, 0, -1}));
  EXPECT_EQ(bytes(primitive.attributes.at("POSITION"), TINYGLTF_COMPONENT_TYPE_FLOAT, TINYGLTF_TYPE_VEC3), as_bytes(surface.positions));
  EXPECT_EQ(bytes(primitive.attributes.at("NORMAL"), TINYGLTF_COMPONENT_TYPE_FLOAT, TINYGLTF_TYPE_VEC3), as_bytes(surface.normals));
  EXPECT_EQ(bytes(primitive.indices, TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT, TINYGLTF_TYPE_SCALAR), as_bytes(surface.triangles));
  std::string rgba;
  for (size_t v = 0; v < surface.colors.size(); v += 3) rgba += as_bytes(std::vector<uint8_t>(&surface.colors[v], &surface.colors[v + 3])) + '\xff';
  EXPECT_EQ(bytes(primitive.attributes.at("COLOR_0"), TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE, TINYGLTF_TYPE_VEC4), rgba);
  EXPECT_TRUE(model.accessors.at(static_cast<size_t>(primitive.attributes.at("COLOR_0"))).normalized);
}

// The bar takes what the numbers leave, up to 30 columns, and the line
// never reaches the last column, where a terminal would wrap it.
TEST(ProgressText, FitsTheTerminal) {
  const std::tuple<int64_t, double, int, const char*> cases[] = {
      {0, 0, 80, "[------------------------------]  0/60 frames"},
      {12, 1.5, 80, "[######------------------------]  12/60 frames  8.0 fps  ETA 0:06"},
      {12, 1.5, 45, "[#--------]  12/60 frames  8.0 fps  ETA 0:06"},
      {12, 1.5, 40, "12/60 frames  8.0 fps  ETA 0:06"},
      {12, 1.5, 20, "12/60 frames  8.0 f"},
      {59, 600, 80, "[#############################-]  59/60 frames  0.1 fps  ETA 0:10"},
      {1, 0.5, 1, ""},
  };
  for (const auto& [done, seconds, columns, text] : cases) {
    SCOPED_TRACE(columns);
    EXPECT_EQ(ProgressText(done, 60, seconds, columns), text);
  }
}

// Pixels read from examples/redwood/color/00002.jpg by djpeg, the positions worked out in
// double precision (column floor(319.5 + 525 x / z), row floor(239.5 + 525 y / z)): frame 2's
// image, column before row, and the inverse of R (here colour = depth turned 90 degrees).
TEST(VertexColors, TakeThePixelTheVertexProjectsTo) {
  ZeltoSim::Recording recording;
  const std::string redwood = std::string(ZELTO_EXAMPLES_DIR) + "/redwood";
  ASSERT_TRUE(ZeltoSim::LoadRecording(redwood, &recording).ok());
  Mesh mesh;
  // Columns 319, 4, 634 and 1369 (outside).
  mesh.vertices = {0, 0, 1, -0.6f, -0.45f, 1, 0.6f, 0.45f, 1, 2, 0, 1};
  std::string error;
  ASSERT_TRUE(ColorizeMesh(recording, 2, &mesh, &error)) << error;
  EXPECT_EQ(mesh.colors, std::vector<uint8_t>({255, 255, 255, 177, 231, 255, 119, 82, 55,
                                               kNoColor, kNoColor, kNoColor}));
  ZeltoTof::Matrix_& r = recording.calibration.R;
  r = {};
  r.b = -1;
  r.d = 1;
  r.i = 1;
  mesh.vertices = {0.45f, -0.6f, 1};  // turned back onto column 4, row 3
  ASSERT_TRUE(ColorizeMesh(recording, 2, &mesh, &error)) << error;
  EXPECT_EQ(mesh.colors, std::vector<uint8_t>({177, 231, 255}));
}

}  // namespace
}  // namespace zelto_cli
