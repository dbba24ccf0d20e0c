// Time helpers of the stream source module (Part 1.4). Nothing in the
// component calls them at present; they stay part of the interface.
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

// The same with the current time given: the steady-clock reading is the only
// difference, which lets tests fix it.
void WaitRemainingTime(std::chrono::steady_clock::time_point start, int32_t milliseconds,
                       std::chrono::steady_clock::time_point now);

}  // namespace Zelto
