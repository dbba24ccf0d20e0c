// ProgressBar: one line redrawn in place with a carriage return, erased at the end.
#include "progress_bar.h"

#include <unistd.h>

#include <algorithm>

namespace zelto_cli {
namespace {
constexpr int kBarWidth = 30;
}

bool ShouldShowProgress(bool quiet, bool logging) {
  return !quiet && !logging && isatty(STDERR_FILENO) == 1;
}

std::string ProgressText(int64_t done, int64_t total, double last_ms) {
  const int64_t filled = total > 0 ? std::min<int64_t>(kBarWidth, done * kBarWidth / total) : 0;
  char numbers[96];
  std::snprintf(numbers, sizeof numbers, "]  %lld/%lld frames  %.1f ms",
                static_cast<long long>(done), static_cast<long long>(total), last_ms);
  return "[" + std::string(static_cast<size_t>(filled), '#') +
         std::string(static_cast<size_t>(kBarWidth - filled), '-') + numbers;
}

ProgressBar::ProgressBar(bool enabled, int64_t total, std::FILE* stream)
    : enabled_(enabled), total_(total), stream_(stream) {}

ProgressBar::~ProgressBar() { Clear(); }

void ProgressBar::Clear() {
  if (!drawn_) return;
  std::fputs("\r\x1b[2K", stream_);  // carriage return, erase the line
  std::fflush(stream_);
  drawn_ = false;
}

void ProgressBar::Update(int64_t done, double last_ms) {
  if (!enabled_) return;
  std::fprintf(stream_, "\r%s", ProgressText(done, total_, last_ms).c_str());
  std::fflush(stream_);
  drawn_ = true;
}

}  // namespace zelto_cli
