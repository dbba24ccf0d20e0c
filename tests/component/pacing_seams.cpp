#include "tests/component/pacing_seams.h"

#include <atomic>
#include <utility>

namespace zelto_test {
namespace {

// Starts far from zero so that "now - 0" is never mistaken for a small gap.
std::atomic<int64_t> manualNanoseconds{int64_t{1000} * 1000 * 1000 * 1000};

}  // namespace

ManualClock::TimePoint ManualClock::Now() {
  return TimePoint(std::chrono::nanoseconds(manualNanoseconds.load()));
}

void ManualClock::Set(TimePoint time) {
  manualNanoseconds.store(
      std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count());
}

void ManualClock::Advance(std::chrono::nanoseconds step) {
  manualNanoseconds.fetch_add(step.count());
}

SleepRecorder::SleepRecorder(std::function<void(uint64_t)> onSleep)
    : onSleep_(std::move(onSleep)) {
  previous_ = weftcore::osal::SetSleepHook([this](uint64_t nanoseconds) {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      sleeps_.push_back(nanoseconds);
    }
    if (onSleep_) onSleep_(nanoseconds);
  });
}

SleepRecorder::~SleepRecorder() { weftcore::osal::SetSleepHook(std::move(previous_)); }

std::vector<uint64_t> SleepRecorder::Sleeps() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return sleeps_;
}

void SleepRecorder::Clear() {
  std::lock_guard<std::mutex> lock(mutex_);
  sleeps_.clear();
}

}  // namespace zelto_test
