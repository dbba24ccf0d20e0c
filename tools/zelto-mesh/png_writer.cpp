// WritePng: an RGB image through libspng.
#include "png_writer.h"

#include <cstdlib>
#include <memory>

#include <spng.h>

#include "file_io.h"

namespace zelto_cli {

bool WritePng(const std::string& path, const Image& image, std::string* error) {
  struct ContextFree {
    void operator()(spng_ctx* context) const { spng_ctx_free(context); }
  };
  struct BufferFree {
    void operator()(void* buffer) const { std::free(buffer); }
  };
  std::unique_ptr<spng_ctx, ContextFree> context(spng_ctx_new(SPNG_CTX_ENCODER));
  if (!context) {
    *error = "cannot write " + path + ": out of memory";
    return false;
  }
  spng_set_option(context.get(), SPNG_ENCODE_TO_BUFFER, 1);
  spng_ihdr header{};
  header.width = static_cast<uint32_t>(image.width);
  header.height = static_cast<uint32_t>(image.height);
  header.bit_depth = 8;
  header.color_type = SPNG_COLOR_TYPE_TRUECOLOR;
  int result = spng_set_ihdr(context.get(), &header);
  if (result == 0) {
    result = spng_encode_image(context.get(), image.rgb.data(), image.rgb.size(), SPNG_FMT_PNG,
                               SPNG_ENCODE_FINALIZE);
  }
  if (result != 0) {
    *error = "cannot write " + path + ": " + spng_strerror(result);
    return false;
  }
  size_t size = 0;
  std::unique_ptr<void, BufferFree> png(spng_get_png_buffer(context.get(), &size, &result));
  if (!png) {
    *error = "cannot write " + path + ": " + spng_strerror(result);
    return false;
  }
  return WriteFile(path, png.get(), size, error);
}

}  // namespace zelto_cli
