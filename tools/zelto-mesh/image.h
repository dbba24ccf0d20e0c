// An 8-bit RGB picture, rows top to bottom.
#pragma once

#include <cstdint>
#include <vector>

namespace zelto_cli {

struct Image {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> rgb;  // 3 bytes per pixel, row-major
};

}  // namespace zelto_cli
