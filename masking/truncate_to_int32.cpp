// TruncateToInt32: the one float-to-integer conversion of the masking
// arithmetic, defined for every float.
#include <cmath>
#include <cstdint>
#include <limits>

#include "masking/zelto_vector3.h"

namespace Zelto {

int32_t TruncateToInt32(float value) {
  // A plain cast is undefined out of range and for NaN, and x86-64 and arm64
  // yield different integers for it. Saturating, with NaN as 0 (what arm64's
  // conversion does in hardware), makes a frame mask the same points on a
  // developer's x86-64 machine as on the device.
  if (std::isnan(value)) return 0;
  // 2^31 is the first float above INT32_MAX; -2^31 itself is in range.
  if (value >= 2147483648.0f) return std::numeric_limits<int32_t>::max();
  if (value < -2147483648.0f) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(value);
}

}  // namespace Zelto
