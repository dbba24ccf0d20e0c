// Small helpers shared by the end-to-end suites of zelto-mesh.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "process_runner.h"

namespace ZeltoCliTest {

inline std::string RedwoodDirectory() { return std::string(ZELTO_EXAMPLES_DIR) + "/redwood"; }

inline std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    const size_t end = text.find('\n', start);
    lines.push_back(text.substr(start, end == std::string::npos ? end : end - start));
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return lines;
}

inline bool Exists(const std::string& path) { return std::filesystem::exists(path); }

}  // namespace ZeltoCliTest
