// The float-to-integer rule of Parts 3.1 and 3.2.
#include <cmath>
#include <cstdint>
#include <limits>

#include "masking/zelto_vector3.h"

namespace Zelto {

int32_t TruncateToInt32(float value) {
  // A plain cast is undefined out of range, and x86-64 and arm64 disagree on
  // what it yields; the component must behave as arm64's FCVTZS everywhere.
  if (std::isnan(value)) return 0;
  // 2^31 is the first float above INT32_MAX; -2^31 itself is in range.
  if (value >= 2147483648.0f) return std::numeric_limits<int32_t>::max();
  if (value < -2147483648.0f) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(value);
}

}  // namespace Zelto
