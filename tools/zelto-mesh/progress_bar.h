// A one-line progress bar on stderr, drawn only for a person watching.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace zelto_cli {

class ProgressBar {
 public:
  // Draws on `stream` only when `enabled`; pass ShouldShowProgress().
  ProgressBar(bool enabled, int64_t total, std::FILE* stream = stderr);
  ~ProgressBar();  // Clear
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void Update(int64_t done, double last_ms);
  // Erases the bar so that a message can take the line; Update draws it again.
  void Clear();

 private:
  bool enabled_;
  bool drawn_ = false;
  int64_t total_;
  std::FILE* stream_;
};

// True when stderr is a terminal that nothing else writes to: not with
// --quiet, and not while the component's log goes there.
bool ShouldShowProgress(bool quiet, bool logging);

// The text of the bar, without the carriage return:
// "[########----------------]  12/60 frames  3.4 ms".
std::string ProgressText(int64_t done, int64_t total, double last_ms);

}  // namespace zelto_cli
