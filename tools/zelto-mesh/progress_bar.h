// A one-line progress bar on stderr, drawn only for a person watching.
#pragma once

#include <chrono>
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

  // `done` frames are taken and written.
  void Update(int64_t done);
  // Erases the bar so that a message can take the line; Update draws it again.
  void Clear();

 private:
  bool enabled_;
  bool drawn_ = false;
  int64_t total_;
  std::FILE* stream_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// True when stderr is a terminal that nothing else writes to: not with
// --quiet, and not while the component's log goes there.
bool ShouldShowProgress(bool quiet, bool logging);

// The columns of the terminal on stderr, else $COLUMNS, else 80.
int TerminalColumns();

// The text of the bar, without the carriage return, at most `columns` - 1
// characters long so that it never wraps:
// "[########--------]  12/60 frames  8.3 fps  ETA 0:06". The bar takes what
// the numbers leave (up to 30); the rate and time left count everything since
// the start, writing included.
std::string ProgressText(int64_t done, int64_t total, double elapsed_seconds, int columns);

}  // namespace zelto_cli
