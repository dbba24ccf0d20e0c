// Frame readiness across the process. A device that produces frames on a
// thread of its own signals each one as it becomes ready; a host waiting for
// a frame sleeps until a signal or its deadline instead of asking its source
// again every so often. One signal wakes every waiter, and each waiter then
// asks its own source: a wake-up is a hint, the source's answer is the truth.
#pragma once

#include <chrono>
#include <cstdint>

#include "weftcore/export.h"

namespace weftcore {

// The number of signals so far. Read it before asking a source, then wait
// with it: a signal given between the question and the wait is not lost.
WEFTCORE_API uint64_t FrameSignalCount();

// Wakes every thread in WaitForFrameSignal.
WEFTCORE_API void SignalFrameReady();

// Waits until the count differs from `seen` or `deadline` has passed.
// Returns true when a signal came.
WEFTCORE_API bool WaitForFrameSignal(uint64_t seen,
                                     std::chrono::steady_clock::time_point deadline);

}  // namespace weftcore
