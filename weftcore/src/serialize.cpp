// The out-of-line part of the serialization helpers: the bounded copy the
// property accessors use for their answer arrays.
#include "weftcore/serialize.h"

#include "weftcore/osal.h"

namespace weftcore {
namespace serialize {

bool Memcpy(void* dst, size_t dst_size, const void* src, size_t count) {
  return osal::OSMemcpy(dst, dst_size, src, count);
}

}  // namespace serialize
}  // namespace weftcore
