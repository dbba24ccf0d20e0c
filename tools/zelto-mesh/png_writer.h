// PNG output through libspng.
#pragma once

#include <string>

#include "image.h"

namespace zelto_cli {

// Writes `image` as an 8-bit truecolour PNG. False with `error` naming the file.
bool WritePng(const std::string& path, const Image& image, std::string* error);

}  // namespace zelto_cli
