// The redwood depth frames read with libspng and converted to point clouds.
#include "support/redwood_frame.h"

#include <spng.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>

namespace ZeltoTest {

PointCloudImage LoadRedwoodFrame(int index) {
  const std::string path = std::string(ZELTO_EXAMPLES_DIR) + "/redwood/depth/" +
                           std::to_string(100000 + index).substr(1) + ".png";
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  const std::unique_ptr<spng_ctx, decltype(&spng_ctx_free)> png(spng_ctx_new(0), spng_ctx_free);
  const auto check = [&path](int error) {
    if (error != 0) throw std::runtime_error(path + ": " + spng_strerror(error));
  };
  check(spng_set_png_buffer(png.get(), bytes.data(), bytes.size()));
  spng_ihdr header{};
  check(spng_get_ihdr(png.get(), &header));
  if (header.bit_depth != 16 || header.color_type != SPNG_COLOR_TYPE_GRAYSCALE) {
    throw std::runtime_error(path + ": not a 16-bit grayscale PNG");
  }
  size_t size = 0;  // SPNG_FMT_RAW: the PNG's big-endian samples on every host
  check(spng_decoded_image_size(png.get(), SPNG_FMT_RAW, &size));
  std::vector<unsigned char> raw(size);
  check(spng_decode_image(png.get(), raw.data(), raw.size(), SPNG_FMT_RAW, 0));

  const RedwoodIntrinsics k;
  const auto toInt16 = [](double value, double low) {
    return static_cast<int16_t>(std::clamp(std::round(value), low, 32767.0));
  };
  PointCloudImage image{int32_t(header.width), int32_t(header.height), {}};
  image.points.resize(3 * size / 2);
  for (int32_t v = 0; v < image.height; ++v) {
    for (int32_t u = 0; u < image.width; ++u) {
      const size_t pixel = size_t(v) * size_t(image.width) + size_t(u);
      const int depth = raw[2 * pixel] << 8 | raw[2 * pixel + 1];
      const double z = toInt16(depth * 1000.0 / k.depthScale, 0.0);
      image.points[3 * pixel + 0] = toInt16((u - double{k.cx}) * z / k.fx, -32768.0);
      image.points[3 * pixel + 1] = toInt16((v - double{k.cy}) * z / k.fy, -32768.0);
      image.points[3 * pixel + 2] = static_cast<int16_t>(z);
    }
  }
  return image;
}

}  // namespace ZeltoTest
