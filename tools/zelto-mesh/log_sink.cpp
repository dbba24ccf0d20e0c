// StderrLogSink: the platform log's records as lines on stderr.
#include "log_sink.h"

#include <cstdio>
#include <string>

namespace zelto_cli {

std::string LogLine(const char* tag, const char* message) {
  std::string text = message != nullptr ? message : "";
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  const std::string prefix = "[" + std::string(tag != nullptr ? tag : "") + "] ";
  // The component's messages carry their own "[ZeltoMesh] " already.
  return text.compare(0, prefix.size(), prefix) == 0 ? text : prefix + text;
}

StderrLogSink::StderrLogSink()
    : previous_(weftcore::osal::SetLogSink([](int, const char* tag, const char* message) {
        const std::string line = LogLine(tag, message) + "\n";
        std::fputs(line.c_str(), stderr);  // one call per line: no interleaving
      })) {}

StderrLogSink::~StderrLogSink() { weftcore::osal::SetLogSink(previous_); }

}  // namespace zelto_cli
