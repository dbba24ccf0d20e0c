// ProgressBar: one line redrawn in place with a carriage return, erased at the end.
#include "progress_bar.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace zelto_cli {
namespace {
constexpr int64_t kLongestBar = 30;
}

bool ShouldShowProgress(bool quiet, bool logging) {
  return !quiet && !logging && isatty(STDERR_FILENO) == 1;
}

int TerminalColumns() {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  const char* columns = std::getenv("COLUMNS");
  const int from_environment = columns != nullptr ? std::atoi(columns) : 0;
  return from_environment > 0 ? from_environment : 80;
}

std::string ProgressText(int64_t done, int64_t total, double elapsed_seconds, int columns) {
  char numbers[128];
  int length = std::snprintf(numbers, sizeof numbers, "  %lld/%lld frames",
                             static_cast<long long>(done), static_cast<long long>(total));
  if (done > 0 && elapsed_seconds > 0) {
    const double rate = static_cast<double>(done) / elapsed_seconds;
    const auto left = static_cast<long long>(static_cast<double>(total - done) / rate + 0.5);
    length += std::snprintf(numbers + length, sizeof numbers - static_cast<size_t>(length),
                            "  %.1f fps  ETA %lld:%02lld", rate, left / 60, left % 60);
  }
  const int64_t room = static_cast<int64_t>(columns) - 1 - length - 2;
  const int64_t width = std::clamp<int64_t>(room, 0, kLongestBar);
  std::string text = numbers;
  if (width >= 5) {  // a narrower bar says nothing the numbers do not
    const int64_t filled = total > 0 ? std::min(width, done * width / total) : 0;
    text = "[" + std::string(static_cast<size_t>(filled), '#') +
           std::string(static_cast<size_t>(width - filled), '-') + "]" + text;
  } else {
    text.erase(0, 2);
  }
  text.resize(std::min<size_t>(text.size(), static_cast<size_t>(std::max(columns - 1, 0))));
  return text;
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

void ProgressBar::Update(int64_t done) {
  if (!enabled_) return;
  const double elapsed =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  std::fprintf(stream_, "\r%s", ProgressText(done, total_, elapsed, TerminalColumns()).c_str());
  std::fflush(stream_);
  drawn_ = true;
}

}  // namespace zelto_cli
