// Grayscale PNG reading and writing (libspng) for recordings and tests.
// 16-bit samples are big-endian in the file and host-endian in memory.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "weftcore/status.h"

namespace ZeltoSim {

struct PngInfo {
  uint32_t width = 0;
  uint32_t height = 0;
  uint8_t bitDepth = 0;
  uint8_t colorType = 0;  // PNG colour type: 0 grayscale, 2 RGB, 3 indexed, 4 GA, 6 RGBA
};

// Walks every chunk of the file without decompressing: the signature, IHDR
// first, at least one IDAT, IEND last, and every chunk's CRC. Catches a
// damaged or truncated body at the cost of one read, long before a decode
// would. Errors: "<path>: damaged PNG (...)".
weftcore::Status CheckPngChunks(const std::string& path);
// Reads only the header. Errors: "<path>: cannot open", "<path>: not a readable PNG (...)".
weftcore::Status ReadPngInfo(const std::string& path, PngInfo* info);
// Fails with "<path>: 8-bit RGB PNG, expected 16-bit grayscale" when the
// file has another format.
weftcore::Status ReadGray16Png(const std::string& path, PngInfo* info,
                               std::vector<uint16_t>* samples);
weftcore::Status ReadGray8Png(const std::string& path, PngInfo* info,
                              std::vector<uint8_t>* samples);
// `bitDepth` 8 (uint8_t samples) or 16 (uint16_t samples, host-endian).
weftcore::Status WriteGrayPng(const std::string& path, uint32_t width, uint32_t height,
                              int bitDepth, const void* samples);

// "16-bit grayscale", "8-bit RGB", ... for messages.
std::string DescribePngFormat(const PngInfo& info);

}  // namespace ZeltoSim
