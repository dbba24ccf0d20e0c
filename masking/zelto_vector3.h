// A point of the depth camera's space, and the float-to-integer conversion
// every mask lookup uses.
#pragma once

#include <cstdint>

namespace Zelto {

// A point in the depth camera's space.
struct ZeltoVector3_ {
  float x = 0;
  float y = 0;
  float z = 0;
};

// Truncates toward zero, saturates at the signed 32-bit limits and gives 0
// for NaN: what arm64's conversion does, made explicit so that x86-64 agrees.
int32_t TruncateToInt32(float value);

}  // namespace Zelto
