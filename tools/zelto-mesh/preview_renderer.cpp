// RenderPreview: a small software rasterizer, enough to see what was meshed.
#include "preview_renderer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "mesh_filter.h"

namespace zelto_cli {
namespace {

struct Vec3 {
  float x, y, z;
};

Vec3 Sub(Vec3 a, Vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Vec3 Cross(Vec3 a, Vec3 b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
float Dot(Vec3 a, Vec3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
float Length(Vec3 a) { return std::sqrt(Dot(a, a)); }

constexpr uint8_t kBackground[3] = {28, 32, 38};
constexpr float kSurface[3] = {236, 226, 206};
constexpr float kAmbient = 0.12f;
constexpr int kMargin = 8;

// Where a vertex lands on the picture, and 1/z for the depth test.
struct ScreenPoint {
  float x, y, inverse_z;
};

// Maps the camera's view (x/z, y/z) of the valid vertices onto the picture.
class ViewFit {
 public:
  ViewFit(const Mesh& mesh, int width, int height) {
    float min_a = std::numeric_limits<float>::max(), max_a = -min_a;
    float min_b = min_a, max_b = -min_a;
    for (int64_t v = 0; v < mesh.VertexCount(); ++v) {
      const float* p = &mesh.vertices[static_cast<size_t>(3 * v)];
      if (IsInvalidVertex(mesh, v) || !(p[2] > 0)) continue;
      min_a = std::min(min_a, p[0] / p[2]);
      max_a = std::max(max_a, p[0] / p[2]);
      min_b = std::min(min_b, p[1] / p[2]);
      max_b = std::max(max_b, p[1] / p[2]);
    }
    if (min_a > max_a) return;  // nothing valid
    const float span_a = std::max(max_a - min_a, 1e-6f);
    const float span_b = std::max(max_b - min_b, 1e-6f);
    scale_ = std::min((width - 2 * kMargin) / span_a, (height - 2 * kMargin) / span_b);
    offset_x_ = (width - span_a * scale_) / 2 - min_a * scale_;
    offset_y_ = (height - span_b * scale_) / 2 - min_b * scale_;
  }
  bool empty() const { return scale_ == 0; }
  ScreenPoint Project(Vec3 p) const {
    return {p.x / p.z * scale_ + offset_x_, p.y / p.z * scale_ + offset_y_, 1 / p.z};
  }

 private:
  float scale_ = 0;
  float offset_x_ = 0;
  float offset_y_ = 0;
};

float Edge(const ScreenPoint& a, const ScreenPoint& b, float x, float y) {
  return (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x);
}

class Rasterizer {
 public:
  explicit Rasterizer(Image* image) : image_(image), depth_(image->rgb.size() / 3, 0.0f) {}

  // Fills the pixels whose centres lie inside the triangle and nearer than
  // what is drawn there (larger 1/z), blending the corners' shades.
  void Fill(const ScreenPoint (&corner)[3], const float (&shade)[3][3]) {
    const ScreenPoint& a = corner[0];
    const ScreenPoint& b = corner[1];
    const ScreenPoint& c = corner[2];
    const float area = Edge(a, b, c.x, c.y);
    if (area == 0 || !std::isfinite(area)) return;
    const int x0 = std::max(0, static_cast<int>(std::floor(std::min({a.x, b.x, c.x}))));
    const int x1 =
        std::min(image_->width - 1, static_cast<int>(std::ceil(std::max({a.x, b.x, c.x}))));
    const int y0 = std::max(0, static_cast<int>(std::floor(std::min({a.y, b.y, c.y}))));
    const int y1 =
        std::min(image_->height - 1, static_cast<int>(std::ceil(std::max({a.y, b.y, c.y}))));
    for (int y = y0; y <= y1; ++y) {
      for (int x = x0; x <= x1; ++x) {
        const float px = x + 0.5f, py = y + 0.5f;
        const float wa = Edge(b, c, px, py) / area;
        const float wb = Edge(c, a, px, py) / area;
        const float wc = Edge(a, b, px, py) / area;
        if (wa < 0 || wb < 0 || wc < 0) continue;
        const float inverse_z = wa * a.inverse_z + wb * b.inverse_z + wc * c.inverse_z;
        const size_t pixel = static_cast<size_t>(y) * image_->width + x;
        if (!(inverse_z > depth_[pixel])) continue;  // also skips NaN
        depth_[pixel] = inverse_z;
        for (int k = 0; k < 3; ++k) {
          const float value = wa * shade[0][k] + wb * shade[1][k] + wc * shade[2][k];
          image_->rgb[3 * pixel + k] = static_cast<uint8_t>(std::clamp(value, 0.0f, 255.0f));
        }
      }
    }
  }

 private:
  Image* image_;
  std::vector<float> depth_;  // 1/z of the nearest surface; 0 is "nothing"
};

bool Drawable(const Mesh& mesh, const int32_t* corner) {
  for (int k = 0; k < 3; ++k) {
    if (corner[k] < 0 || corner[k] >= mesh.VertexCount() || IsInvalidVertex(mesh, corner[k]) ||
        !(mesh.vertices[static_cast<size_t>(3) * corner[k] + 2] > 0)) {
      return false;
    }
  }
  return true;
}

Vec3 VertexAt(const Mesh& mesh, int32_t index) {
  const float* p = &mesh.vertices[static_cast<size_t>(3) * index];
  return Vec3{p[0], p[1], p[2]};
}

// Vertex normals: the sum of the face normals around each vertex, then
// smoothed over the neighbourhood a few times. Depth comes in whole
// millimetres, so single faces of a dense grid tilt at random; averaged
// normals show the shape instead of the quantization noise.
std::vector<Vec3> SmoothVertexNormals(const Mesh& mesh) {
  std::vector<Vec3> normals(static_cast<size_t>(mesh.VertexCount()), Vec3{0, 0, 0});
  for (size_t t = 0; t + 2 < mesh.triangles.size(); t += 3) {
    const int32_t* corner = &mesh.triangles[t];
    if (!Drawable(mesh, corner)) continue;
    const Vec3 a = VertexAt(mesh, corner[0]), b = VertexAt(mesh, corner[1]),
               c = VertexAt(mesh, corner[2]);
    Vec3 normal = Cross(Sub(b, a), Sub(c, a));
    // Both windings occur; orient every face towards the camera.
    if (Dot(normal, a) > 0) normal = {-normal.x, -normal.y, -normal.z};
    for (int k = 0; k < 3; ++k) {
      Vec3& sum = normals[static_cast<size_t>(corner[k])];
      sum = {sum.x + normal.x, sum.y + normal.y, sum.z + normal.z};
    }
  }
  constexpr int kSmoothingPasses = 3;
  for (int pass = 0; pass < kSmoothingPasses; ++pass) {
    std::vector<Vec3> smoothed(normals.size(), Vec3{0, 0, 0});
    for (size_t t = 0; t + 2 < mesh.triangles.size(); t += 3) {
      const int32_t* corner = &mesh.triangles[t];
      if (!Drawable(mesh, corner)) continue;
      Vec3 face = {0, 0, 0};
      for (int k = 0; k < 3; ++k) {
        const Vec3& n = normals[static_cast<size_t>(corner[k])];
        const float length = Length(n);
        if (length > 0) face = {face.x + n.x / length, face.y + n.y / length, face.z + n.z / length};
      }
      for (int k = 0; k < 3; ++k) {
        Vec3& sum = smoothed[static_cast<size_t>(corner[k])];
        sum = {sum.x + face.x, sum.y + face.y, sum.z + face.z};
      }
    }
    normals.swap(smoothed);
  }
  return normals;
}

// The mesh as seen from the side viewpoint: turned 55 degrees about the
// vertical axis through the centre of its valid vertices, looked at from 20
// degrees above, then moved away until the whole scene is in front of the view.
Mesh SeenFromTheSide(const Mesh& mesh) {
  double centre[3] = {0, 0, 0};
  int64_t count = 0;
  for (int64_t v = 0; v < mesh.VertexCount(); ++v) {
    if (IsInvalidVertex(mesh, v)) continue;
    for (int k = 0; k < 3; ++k) centre[k] += mesh.vertices[static_cast<size_t>(3 * v + k)];
    ++count;
  }
  if (count == 0) return mesh;
  for (double& c : centre) c /= static_cast<double>(count);
  constexpr double kDegree = 3.14159265358979 / 180;
  const double cosine = std::cos(55 * kDegree), sine = std::sin(55 * kDegree);
  const double tilt_cosine = std::cos(20 * kDegree), tilt_sine = std::sin(20 * kDegree);
  Mesh turned = mesh;
  double radius = 0;
  for (int64_t v = 0; v < mesh.VertexCount(); ++v) {
    if (IsInvalidVertex(mesh, v)) continue;
    float* p = &turned.vertices[static_cast<size_t>(3 * v)];
    const double x = p[0] - centre[0], y = p[1] - centre[1], z = p[2] - centre[2];
    const double turned_z = sine * x + cosine * z;  // about the vertical axis
    p[0] = static_cast<float>(cosine * x - sine * z);
    p[1] = static_cast<float>(tilt_cosine * y - tilt_sine * turned_z);  // then down onto it
    p[2] = static_cast<float>(tilt_cosine * turned_z + tilt_sine * y);
    radius = std::max(radius, std::sqrt(x * x + y * y + z * z));
  }
  for (int64_t v = 0; v < mesh.VertexCount(); ++v) {
    if (IsInvalidVertex(mesh, v)) continue;
    turned.vertices[static_cast<size_t>(3 * v + 2)] += 2.5f * static_cast<float>(radius);
  }
  return turned;
}

}  // namespace

Image RenderPreview(const Mesh& delivered, int width, int height, PreviewView view) {
  Mesh side;
  if (view == PreviewView::kSide) side = SeenFromTheSide(delivered);
  const Mesh& mesh = view == PreviewView::kSide ? side : delivered;
  Image image;
  image.width = width;
  image.height = height;
  image.rgb.resize(static_cast<size_t>(width) * height * 3);
  for (size_t i = 0; i < image.rgb.size(); ++i) image.rgb[i] = kBackground[i % 3];

  const ViewFit fit(mesh, width, height);
  if (fit.empty()) return image;
  const std::vector<Vec3> normals = SmoothVertexNormals(mesh);
  // Lambert under a light at the camera: the cosine between the normal and
  // the line of sight.
  const bool coloured = mesh.colors.size() == mesh.vertices.size();
  const auto shade = [&](int32_t index, float (&rgb)[3]) {
    const Vec3 p = VertexAt(mesh, index);
    const Vec3& n = normals[static_cast<size_t>(index)];
    const float lengths = Length(n) * Length(p);
    const float lambert = lengths > 0 ? std::fabs(Dot(n, p)) / lengths : 0;
    const float light = kAmbient + (1 - kAmbient) * lambert;
    for (size_t k = 0; k < 3; ++k) {
      // Colours keep most of their own brightness; the light shows the shape.
      rgb[k] = coloured ? mesh.colors[3 * static_cast<size_t>(index) + k] * (0.45f + 0.55f * light)
                        : kSurface[k] * light;
    }
  };
  Rasterizer rasterizer(&image);
  for (size_t t = 0; t + 2 < mesh.triangles.size(); t += 3) {
    const int32_t* corner = &mesh.triangles[t];
    if (!Drawable(mesh, corner)) continue;
    const ScreenPoint points[3] = {fit.Project(VertexAt(mesh, corner[0])),
                                   fit.Project(VertexAt(mesh, corner[1])),
                                   fit.Project(VertexAt(mesh, corner[2]))};
    float shades[3][3];
    for (int k = 0; k < 3; ++k) shade(corner[k], shades[k]);
    rasterizer.Fill(points, shades);
  }
  return image;
}

}  // namespace zelto_cli
