// The colour images of a recording: PNG (libspng) or JPEG (TurboJPEG),
// chosen by the file's first bytes, decoded to 8-bit red, green, blue.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "weftcore/status.h"

namespace ZeltoSim {

struct ColorImage {
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<uint8_t> rgb;  // row-major, 3 bytes per pixel
};

// Size and a cheap check of the whole file without decoding it: every PNG
// chunk (CheckPngChunks), or a JPEG's start and end markers and its header.
// Errors name the file: "<path>: damaged JPEG (no end marker)", ...
weftcore::Status CheckColorImage(const std::string& path, uint32_t* width, uint32_t* height);

// The whole image; grey, grey+alpha, RGBA and 16-bit PNGs are reduced to
// 8-bit RGB (alpha dropped).
weftcore::Status ReadColorImage(const std::string& path, ColorImage* image);

}  // namespace ZeltoSim
