// The OS layer on Linux, with the host's hooks: one mutex guards the sleep
// hook and the log sink, and each call copies the hook out before running it,
// so a hook may itself sleep or log without deadlocking.
#include "weftcore/osal.h"

#include <chrono>
#include <cstring>
#include <mutex>
#include <thread>
#include <utility>

namespace weftcore {
namespace osal {
namespace {

std::mutex& HookMutex() {
  static std::mutex mutex;
  return mutex;
}

SleepHook& CurrentSleepHook() {
  static SleepHook hook;
  return hook;
}

LogSink& CurrentLogSink() {
  static LogSink sink;
  return sink;
}

}  // namespace

void OSSleep(uint64_t nanoseconds) {
  SleepHook hook;
  {
    std::lock_guard<std::mutex> lock(HookMutex());
    hook = CurrentSleepHook();
  }
  if (hook) {
    hook(nanoseconds);
    return;
  }
  std::this_thread::sleep_for(std::chrono::nanoseconds(nanoseconds));
}

bool OSMemcpy(void* dst, size_t dst_size, const void* src, size_t count) {
  if (count == 0) return true;
  if (dst == nullptr || src == nullptr || count > dst_size) return false;
  std::memcpy(dst, src, count);
  return true;
}

SleepHook SetSleepHook(SleepHook hook) {
  std::lock_guard<std::mutex> lock(HookMutex());
  return std::exchange(CurrentSleepHook(), std::move(hook));
}

LogSink SetLogSink(LogSink sink) {
  std::lock_guard<std::mutex> lock(HookMutex());
  return std::exchange(CurrentLogSink(), std::move(sink));
}

bool DeliverToLogSink(int log_type, const char* tag, const char* message) {
  LogSink sink;
  {
    std::lock_guard<std::mutex> lock(HookMutex());
    sink = CurrentLogSink();
  }
  if (!sink) return false;
  sink(log_type, tag, message);
  return true;
}

}  // namespace osal
}  // namespace weftcore
