// libspng behind RAII handles. SPNG_FMT_PNG decodes to the file's own sample
// layout in host byte order, so 16-bit samples need no swapping here.
#include "zelto_sim/png_io.h"

#include <spng.h>
#include <zlib.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>

#include "sim_error.h"

namespace ZeltoSim {
namespace {

// Larger images are refused before any allocation.
constexpr uint32_t kMaxDimension = 16384;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

struct ContextFreer {
  void operator()(spng_ctx* context) const { spng_ctx_free(context); }
};
using ContextHandle = std::unique_ptr<spng_ctx, ContextFreer>;

weftcore::Status OpenFailure(const std::string& path) {
  return SimError(weftcore::kCauseNotFound, path + ": cannot open: " + std::strerror(errno));
}

weftcore::Status SpngFailure(const std::string& path, int error) {
  return SimError(weftcore::kCauseInvalidArgument,
                  path + ": not a readable PNG (" + spng_strerror(error) + ")");
}

// Opens `path` for decoding and reads its header.
weftcore::Status OpenDecoder(const std::string& path, FileHandle* file, ContextHandle* context,
                             PngInfo* info) {
  file->reset(std::fopen(path.c_str(), "rb"));
  if (!*file) return OpenFailure(path);
  context->reset(spng_ctx_new(0));
  if (!*context) return SimError(weftcore::kCauseOutOfMemory, path + ": out of memory");
  spng_set_image_limits(context->get(), kMaxDimension, kMaxDimension);
  int error = spng_set_png_file(context->get(), file->get());
  spng_ihdr header{};
  if (error == 0) error = spng_get_ihdr(context->get(), &header);
  if (error != 0) return SpngFailure(path, error);
  info->width = header.width;
  info->height = header.height;
  info->bitDepth = header.bit_depth;
  info->colorType = header.color_type;
  return weftcore::Status();
}

template <typename Sample>
weftcore::Status ReadGrayPng(const std::string& path, PngInfo* info,
                             std::vector<Sample>* samples) {
  FileHandle file;
  ContextHandle context;
  weftcore::Status status = OpenDecoder(path, &file, &context, info);
  if (status.IsError()) return status;
  const PngInfo wanted{0, 0, static_cast<uint8_t>(sizeof(Sample) * 8), SPNG_COLOR_TYPE_GRAYSCALE};
  if (info->bitDepth != wanted.bitDepth || info->colorType != wanted.colorType) {
    return SimError(weftcore::kCauseInvalidArgument,
                    path + ": " + DescribePngFormat(*info) + " PNG, expected " +
                        DescribePngFormat(wanted));
  }
  samples->assign(static_cast<size_t>(info->width) * info->height, 0);
  const int error = spng_decode_image(context.get(), samples->data(),
                                      samples->size() * sizeof(Sample), SPNG_FMT_PNG, 0);
  if (error != 0) return SpngFailure(path, error);
  return weftcore::Status();
}

uint32_t BigEndian32(const unsigned char* bytes) {
  return (uint32_t{bytes[0]} << 24) | (uint32_t{bytes[1]} << 16) | (uint32_t{bytes[2]} << 8) |
         uint32_t{bytes[3]};
}

weftcore::Status Damaged(const std::string& path, const std::string& what) {
  return SimError(weftcore::kCauseInvalidArgument, path + ": damaged PNG (" + what + ")");
}

}  // namespace

weftcore::Status CheckPngChunks(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return OpenFailure(path);
  const std::vector<unsigned char> bytes(std::istreambuf_iterator<char>(file), {});
  static constexpr unsigned char kSignature[8] = {137, 80, 78, 71, 13, 10, 26, 10};
  if (bytes.size() < 8 || std::memcmp(bytes.data(), kSignature, 8) != 0) {
    return Damaged(path, "no PNG signature");
  }
  bool seen_data = false;
  for (size_t at = 8;;) {
    if (bytes.size() - at < 12) return Damaged(path, "truncated at byte " + std::to_string(at));
    const uint32_t length = BigEndian32(&bytes[at]);
    if (length > bytes.size() - at - 12) {
      return Damaged(path, "truncated at byte " + std::to_string(at));
    }
    const std::string type(reinterpret_cast<const char*>(&bytes[at + 4]), 4);
    const unsigned char* body = &bytes[at + 4];
    if (crc32(0, body, length + 4) != BigEndian32(body + 4 + length)) {
      return Damaged(path, "bad CRC in the " + type + " chunk at byte " + std::to_string(at));
    }
    if (at == 8 && type != "IHDR") return Damaged(path, "IHDR is not the first chunk");
    seen_data = seen_data || type == "IDAT";
    at += 12 + size_t{length};
    if (type == "IEND") return seen_data ? weftcore::Status() : Damaged(path, "no IDAT chunk");
  }
}

std::string DescribePngFormat(const PngInfo& info) {
  std::string kind;
  switch (info.colorType) {
    case SPNG_COLOR_TYPE_GRAYSCALE: kind = "grayscale"; break;
    case SPNG_COLOR_TYPE_TRUECOLOR: kind = "RGB"; break;
    case SPNG_COLOR_TYPE_INDEXED: kind = "indexed-colour"; break;
    case SPNG_COLOR_TYPE_GRAYSCALE_ALPHA: kind = "grayscale+alpha"; break;
    case SPNG_COLOR_TYPE_TRUECOLOR_ALPHA: kind = "RGBA"; break;
    default: kind = "colour-type-" + std::to_string(info.colorType); break;
  }
  return std::to_string(info.bitDepth) + "-bit " + kind;
}

weftcore::Status ReadPngInfo(const std::string& path, PngInfo* info) {
  FileHandle file;
  ContextHandle context;
  return OpenDecoder(path, &file, &context, info);
}

weftcore::Status ReadGray16Png(const std::string& path, PngInfo* info,
                               std::vector<uint16_t>* samples) {
  return ReadGrayPng(path, info, samples);
}

weftcore::Status ReadGray8Png(const std::string& path, PngInfo* info,
                              std::vector<uint8_t>* samples) {
  return ReadGrayPng(path, info, samples);
}

weftcore::Status WriteGrayPng(const std::string& path, uint32_t width, uint32_t height,
                              int bitDepth, const void* samples) {
  if (bitDepth != 8 && bitDepth != 16) {
    return SimError(weftcore::kCauseInvalidArgument,
                    path + ": bit depth " + std::to_string(bitDepth) + " is not 8 or 16");
  }
  FileHandle file(std::fopen(path.c_str(), "wb"));
  if (!file) return OpenFailure(path);
  ContextHandle context(spng_ctx_new(SPNG_CTX_ENCODER));
  if (!context) return SimError(weftcore::kCauseOutOfMemory, path + ": out of memory");
  spng_ihdr header{};
  header.width = width;
  header.height = height;
  header.bit_depth = static_cast<uint8_t>(bitDepth);
  header.color_type = SPNG_COLOR_TYPE_GRAYSCALE;
  int error = spng_set_png_file(context.get(), file.get());
  if (error == 0) error = spng_set_ihdr(context.get(), &header);
  const size_t size = static_cast<size_t>(width) * height * static_cast<size_t>(bitDepth / 8);
  if (error == 0) {
    error = spng_encode_image(context.get(), samples, size, SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE);
  }
  if (error != 0) {
    return SimError(weftcore::kCauseInvalidArgument,
                    path + ": cannot write PNG (" + spng_strerror(error) + ")");
  }
  return weftcore::Status();
}

}  // namespace ZeltoSim
