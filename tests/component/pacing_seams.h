// Seams for the frame pacing of Part 1.4: a steady clock that only moves when
// told (ZeltoMeshStreamSource::SetClockForTesting takes a plain function), and
// a recorder of OSSleep calls that never sleeps.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

#include "weftcore/osal.h"

namespace zelto_test {

class ManualClock {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  static TimePoint Now();
  static void Set(TimePoint time);
  static void Advance(std::chrono::nanoseconds step);
};

class SleepRecorder {
 public:
  // `onSleep`, if given, runs inside each recorded sleep.
  explicit SleepRecorder(std::function<void(uint64_t)> onSleep = {});
  ~SleepRecorder();
  SleepRecorder(const SleepRecorder&) = delete;
  SleepRecorder& operator=(const SleepRecorder&) = delete;

  std::vector<uint64_t> Sleeps() const;  // nanoseconds asked, in order
  void Clear();

 private:
  std::function<void(uint64_t)> onSleep_;
  weftcore::osal::SleepHook previous_;
  mutable std::mutex mutex_;
  std::vector<uint64_t> sleeps_;
};

}  // namespace zelto_test
