// Helpers shared by the suites that run zelto-mesh as a user does.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "process_runner.h"
#include "strict_ply_reader.h"

namespace ZeltoCliTest {

inline const std::string kRedwood = std::string(ZELTO_EXAMPLES_DIR) + "/redwood";

inline std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  for (size_t start = 0, end = 0; start < text.size(); start = end + 1) {
    end = std::min(text.find('\n', start), text.size());
    lines.push_back(text.substr(start, end - start));
  }
  return lines;
}

inline PlyMesh ReadPly(const std::string& path) {
  PlyMesh mesh;
  EXPECT_TRUE(ReadStrictPly(ReadFileBytes(path), &mesh)) << path << " is not a zelto-mesh PLY";
  return mesh;
}

}  // namespace ZeltoCliTest
