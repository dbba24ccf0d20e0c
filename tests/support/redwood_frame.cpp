#include "support/redwood_frame.h"

#include <spng.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace ZeltoTest {
namespace {

struct SpngContextFree {
  void operator()(spng_ctx* context) const { spng_ctx_free(context); }
};

void Check(int spngError, const std::string& path) {
  if (spngError != 0) {
    throw std::runtime_error(path + ": " + spng_strerror(spngError));
  }
}

int16_t RoundToInt16(double value, double low, double high) {
  return static_cast<int16_t>(std::clamp(std::round(value), low, high));
}

}  // namespace

std::vector<uint16_t> ReadDepthPng(const std::string& path, int32_t* width, int32_t* height) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path + ": cannot open");
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file),
                                std::istreambuf_iterator<char>()};
  std::unique_ptr<spng_ctx, SpngContextFree> context(spng_ctx_new(0));
  if (!context) throw std::runtime_error("spng_ctx_new failed");
  Check(spng_set_png_buffer(context.get(), bytes.data(), bytes.size()), path);
  spng_ihdr header{};
  Check(spng_get_ihdr(context.get(), &header), path);
  if (header.bit_depth != 16 || header.color_type != SPNG_COLOR_TYPE_GRAYSCALE) {
    throw std::runtime_error(path + ": not a 16-bit grayscale PNG");
  }
  // SPNG_FMT_RAW keeps the PNG's big-endian samples on every host; they are
  // assembled explicitly below.
  size_t size = 0;
  Check(spng_decoded_image_size(context.get(), SPNG_FMT_RAW, &size), path);
  std::vector<unsigned char> raw(size);
  Check(spng_decode_image(context.get(), raw.data(), raw.size(), SPNG_FMT_RAW, 0), path);
  *width = static_cast<int32_t>(header.width);
  *height = static_cast<int32_t>(header.height);
  std::vector<uint16_t> depth(raw.size() / 2);
  for (size_t i = 0; i < depth.size(); ++i) {
    depth[i] = static_cast<uint16_t>((raw[2 * i] << 8) | raw[2 * i + 1]);
  }
  return depth;
}

PointCloudImage DepthToPointCloud(const std::vector<uint16_t>& depth, int32_t width,
                                  int32_t height, const RedwoodIntrinsics& k) {
  PointCloudImage image;
  image.width = width;
  image.height = height;
  image.points.resize(3 * static_cast<size_t>(width) * static_cast<size_t>(height));
  for (int32_t v = 0; v < height; ++v) {
    for (int32_t u = 0; u < width; ++u) {
      const size_t pixel = static_cast<size_t>(v) * static_cast<size_t>(width) + static_cast<size_t>(u);
      const double z = std::clamp(std::round(depth[pixel] * 1000.0 / k.depthScale), 0.0, 32767.0);
      image.points[3 * pixel + 0] = RoundToInt16((u - static_cast<double>(k.cx)) * z / k.fx, -32768.0, 32767.0);
      image.points[3 * pixel + 1] = RoundToInt16((v - static_cast<double>(k.cy)) * z / k.fy, -32768.0, 32767.0);
      image.points[3 * pixel + 2] = static_cast<int16_t>(z);
    }
  }
  return image;
}

PointCloudImage LoadRedwoodFrame(int index) {
  char name[32];
  std::snprintf(name, sizeof name, "/redwood/depth/%05d.png", index);
  int32_t width = 0;
  int32_t height = 0;
  const std::vector<uint16_t> depth = ReadDepthPng(std::string(ZELTO_EXAMPLES_DIR) + name, &width, &height);
  return DepthToPointCloud(depth, width, height, RedwoodIntrinsics{});
}

}  // namespace ZeltoTest
