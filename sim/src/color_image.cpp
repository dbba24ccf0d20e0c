#include "zelto_sim/color_image.h"

#include <spng.h>
#include <turbojpeg.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>

#include "sim_error.h"
#include "zelto_sim/png_io.h"

namespace ZeltoSim {
namespace {

// Larger images are refused before any allocation, as for depth PNGs.
constexpr uint32_t kMaxDimension = 16384;

weftcore::Status ReadBytes(const std::string& path, std::vector<unsigned char>* bytes) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    return SimError(weftcore::kCauseNotFound, path + ": cannot open: " + std::strerror(errno));
  }
  bytes->assign(std::istreambuf_iterator<char>(file), {});
  return weftcore::Status();
}

bool IsJpeg(const std::vector<unsigned char>& bytes) {
  return bytes.size() >= 2 && bytes[0] == 0xFF && bytes[1] == 0xD8;
}

struct JpegDestroyer {
  void operator()(void* handle) const { tjDestroy(handle); }
};
using JpegHandle = std::unique_ptr<void, JpegDestroyer>;

// A JPEG ends with the EOI marker; writers may pad it with zero bytes. A file
// cut short loses it, which the decoder itself would only warn about.
weftcore::Status JpegHeader(const std::string& path, const std::vector<unsigned char>& bytes,
                            void* handle, uint32_t* width, uint32_t* height) {
  size_t end = bytes.size();
  while (end > 2 && bytes[end - 1] == 0) --end;
  if (end < 4 || bytes[end - 2] != 0xFF || bytes[end - 1] != 0xD9) {
    return Invalid(path + ": damaged JPEG (no end marker)");
  }
  int w = 0, h = 0, subsampling = 0, colorspace = 0;
  if (tjDecompressHeader3(handle, bytes.data(), bytes.size(), &w, &h, &subsampling,
                          &colorspace) != 0) {
    return Invalid(path + ": damaged JPEG (" + tjGetErrorStr2(handle) + ")");
  }
  if (w <= 0 || h <= 0 || static_cast<uint32_t>(w) > kMaxDimension ||
      static_cast<uint32_t>(h) > kMaxDimension) {
    return Invalid(path + ": JPEG of " + std::to_string(w) + " x " + std::to_string(h) +
                   " pixels, at most " + std::to_string(kMaxDimension) + " each way");
  }
  *width = static_cast<uint32_t>(w);
  *height = static_cast<uint32_t>(h);
  return weftcore::Status();
}

weftcore::Status NewJpegHandle(const std::string& path, JpegHandle* handle) {
  handle->reset(tjInitDecompress());
  if (*handle) return weftcore::Status();
  return SimError(weftcore::kCauseOutOfMemory, path + ": cannot start a JPEG decoder");
}

weftcore::Status DecodeJpeg(const std::string& path, const std::vector<unsigned char>& bytes,
                            ColorImage* image) {
  JpegHandle handle;
  weftcore::Status status = NewJpegHandle(path, &handle);
  if (status.ok()) status = JpegHeader(path, bytes, handle.get(), &image->width, &image->height);
  if (status.IsError()) return status;
  image->rgb.assign(static_cast<size_t>(image->width) * image->height * 3, 0);
  // Warnings (corrupt entropy data the decoder would paper over) are errors.
  if (tjDecompress2(handle.get(), bytes.data(), bytes.size(), image->rgb.data(),
                    static_cast<int>(image->width), 0, static_cast<int>(image->height), TJPF_RGB,
                    TJFLAG_STOPONWARNING) != 0) {
    return Invalid(path + ": damaged JPEG (" + tjGetErrorStr2(handle.get()) + ")");
  }
  return weftcore::Status();
}

struct ContextFreer {
  void operator()(spng_ctx* context) const { spng_ctx_free(context); }
};

weftcore::Status DecodePng(const std::string& path, const std::vector<unsigned char>& bytes,
                           ColorImage* image) {
  std::unique_ptr<spng_ctx, ContextFreer> context(spng_ctx_new(0));
  if (!context) return SimError(weftcore::kCauseOutOfMemory, path + ": out of memory");
  spng_set_image_limits(context.get(), kMaxDimension, kMaxDimension);
  spng_ihdr header{};
  int error = spng_set_png_buffer(context.get(), bytes.data(), bytes.size());
  if (error == 0) error = spng_get_ihdr(context.get(), &header);
  std::vector<uint8_t> rgba;
  if (error == 0) {
    rgba.resize(size_t{header.width} * header.height * 4);
    error = spng_decode_image(context.get(), rgba.data(), rgba.size(), SPNG_FMT_RGBA8, 0);
  }
  if (error != 0) {
    return Invalid(path + ": not a readable PNG (" + spng_strerror(error) + ")");
  }
  image->width = header.width;
  image->height = header.height;
  image->rgb.resize(rgba.size() / 4 * 3);
  for (size_t i = 0, j = 0; i < rgba.size(); i += 4, j += 3) {
    std::memcpy(&image->rgb[j], &rgba[i], 3);
  }
  return weftcore::Status();
}

}  // namespace

weftcore::Status CheckColorImage(const std::string& path, uint32_t* width, uint32_t* height) {
  std::vector<unsigned char> bytes;
  weftcore::Status status = ReadBytes(path, &bytes);
  if (status.IsError()) return status;
  if (IsJpeg(bytes)) {
    JpegHandle handle;
    status = NewJpegHandle(path, &handle);
    return status.ok() ? JpegHeader(path, bytes, handle.get(), width, height) : status;
  }
  status = CheckPngChunks(path);
  PngInfo info;
  if (status.ok()) status = ReadPngInfo(path, &info);
  *width = info.width;
  *height = info.height;
  return status;
}

weftcore::Status ReadColorImage(const std::string& path, ColorImage* image) {
  std::vector<unsigned char> bytes;
  weftcore::Status status = ReadBytes(path, &bytes);
  if (status.IsError()) return status;
  return IsJpeg(bytes) ? DecodeJpeg(path, bytes, image) : DecodePng(path, bytes, image);
}

}  // namespace ZeltoSim
