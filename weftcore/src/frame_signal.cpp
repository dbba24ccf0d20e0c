// The process's frame signal: a counter under a mutex, and a condition
// variable that every signal notifies.
#include "weftcore/frame_signal.h"

#include <condition_variable>
#include <mutex>

namespace weftcore {
namespace {

struct FrameSignal {
  std::mutex mutex;
  std::condition_variable changed;
  uint64_t count = 0;  // guarded by mutex
};

FrameSignal& TheSignal() {
  static FrameSignal signal;
  return signal;
}

}  // namespace

uint64_t FrameSignalCount() {
  FrameSignal& signal = TheSignal();
  std::lock_guard<std::mutex> lock(signal.mutex);
  return signal.count;
}

void SignalFrameReady() {
  FrameSignal& signal = TheSignal();
  {
    std::lock_guard<std::mutex> lock(signal.mutex);
    ++signal.count;
  }
  signal.changed.notify_all();
}

bool WaitForFrameSignal(uint64_t seen, std::chrono::steady_clock::time_point deadline) {
  FrameSignal& signal = TheSignal();
  std::unique_lock<std::mutex> lock(signal.mutex);
  return signal.changed.wait_until(lock, deadline, [&] { return signal.count != seen; });
}

}  // namespace weftcore
