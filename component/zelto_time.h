// Time and float helpers of the mesh component's interface, for code that
// paces itself against the steady clock or compares camera parameters.
#pragma once

#include <chrono>
#include <cstdint>

namespace Zelto {

// |a - b| < FLT_EPSILON * max(1, |a|, |b|): equal within single-precision
// rounding, relative to the larger magnitude but never below 1.
bool CompareFloat(float a, float b);

// Sleeps (OSSleep) for what remains of `milliseconds` since `start`, counted
// in whole elapsed milliseconds; returns at once when none remains.
void WaitRemainingTime(std::chrono::steady_clock::time_point start, int32_t milliseconds);

}  // namespace Zelto
