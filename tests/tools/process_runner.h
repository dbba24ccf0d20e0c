// Runs the built zelto-mesh as a child process, as a user's shell would.
#pragma once

#include <string>
#include <vector>

namespace ZeltoCliTest {

struct ProcessResult {
  int exitCode = -1;  // -1 when the child did not exit normally
  std::string out, err;
};

// zelto-mesh in `directory`, stderr on a file or a terminal, with `environment` added.
ProcessResult RunZeltoMesh(const std::vector<std::string>& arguments, const std::string& directory,
                           const std::vector<std::string>& environment = {}, bool terminal = false);
// A fresh directory for the running test in this build's tree (other builds run the same tests).
std::string FreshDirectory(const std::string& name);
std::string ReadFileBytes(const std::string& path);

}  // namespace ZeltoCliTest
