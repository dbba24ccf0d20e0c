// PlatformLogSink: the platform log's records as lines on stderr, and the
// device's stop report kept for the frame loop.
#include "log_sink.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace zelto_cli {
namespace {

// What the simulated device writes, after its stream type, when it stops at
// a frame it cannot read: "tof_camera: frame delivery stopped: FILE: reason".
constexpr char kDeviceStopped[] = ": frame delivery stopped: ";

}  // namespace

std::string LogLine(const char* tag, const char* message) {
  std::string text = message != nullptr ? message : "";
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  const std::string prefix = "[" + std::string(tag != nullptr ? tag : "") + "] ";
  // The component's messages carry their own "[ZeltoMesh] " already.
  return text.compare(0, prefix.size(), prefix) == 0 ? text : prefix + text;
}

PlatformLogSink::PlatformLogSink(bool echo)
    : echo_(echo),
      previous_(weftcore::osal::SetLogSink(
          [this](int log_type, const char* tag, const char* message) {
            Receive(log_type, tag, message);
          })) {}

PlatformLogSink::~PlatformLogSink() { weftcore::osal::SetLogSink(previous_); }

std::optional<std::string> PlatformLogSink::DeviceStop() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return deviceStop_;
}

void PlatformLogSink::Receive(int, const char* tag, const char* message) {
  if (echo_) {
    const std::string line = LogLine(tag, message) + "\n";
    std::fputs(line.c_str(), stderr);  // one call per line: no interleaving
  }
  if (message == nullptr || tag == nullptr || std::strcmp(tag, "ZeltoSim") != 0) return;
  const char* stop = std::strstr(message, kDeviceStopped);
  if (stop == nullptr) return;
  std::string cause = stop + std::strlen(kDeviceStopped);
  while (!cause.empty() && (cause.back() == '\n' || cause.back() == '\r')) cause.pop_back();
  std::lock_guard<std::mutex> lock(mutex_);
  if (!deviceStop_) deviceStop_ = cause;
}

}  // namespace zelto_cli
