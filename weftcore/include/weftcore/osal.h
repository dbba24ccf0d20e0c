// The OS layer components call instead of the platform: sleeping, bounded
// copies and the platform log. A host (and a test of a component) can take
// over the sleep and the log with the hooks below.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "weftcore/export.h"

namespace weftcore {
namespace osal {

// Sleeps for `nanoseconds`; with a sleep hook installed, calls the hook instead.
WEFTCORE_API void OSSleep(uint64_t nanoseconds);

// Copies `count` bytes to `dst`, a block of `dst_size` bytes. Copies nothing
// and returns false when the block is too small or a pointer is null.
WEFTCORE_API bool OSMemcpy(void* dst, size_t dst_size, const void* src, size_t count);

// Replaces the real sleep, so that a host or a test can step time instead of
// waiting for it. Returns the previous hook; an empty function restores the
// real sleep.
using SleepHook = std::function<void(uint64_t nanoseconds)>;
WEFTCORE_API SleepHook SetSleepHook(SleepHook hook);

// The platform log. Log types are the platform's (default 0, info 1, debug 2,
// error 16). With a sink installed every record goes to the sink instead of
// the system log, so that a host or a test can read what a component logs.
using LogSink = std::function<void(int log_type, const char* tag, const char* message)>;
WEFTCORE_API LogSink SetLogSink(LogSink sink);
// True when a sink took the record; false means "write it to the system log".
WEFTCORE_API bool DeliverToLogSink(int log_type, const char* tag, const char* message);

}  // namespace osal
}  // namespace weftcore
