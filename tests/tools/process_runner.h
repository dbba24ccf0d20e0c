// Runs the built zelto-mesh as a child process, as a user's shell would.
#pragma once

#include <string>
#include <vector>

namespace ZeltoCliTest {

struct ProcessResult {
  int exitCode = -1;  // -1 when the child did not exit normally
  std::string out, err;
};

// zelto-mesh in `directory`, stdout on a file, stderr on a file or a pseudo-
// terminal, with this process's environment plus `environment` ("NAME=value").
ProcessResult RunZeltoMesh(const std::vector<std::string>& arguments, const std::string& directory,
                           const std::vector<std::string>& environment = {}, bool terminal = false);
// A fresh directory named after the running test, under this build's tree:
// builds of other presets may run the same tests at the same time.
std::string FreshDirectory(const std::string& name);
std::string ReadFileBytes(const std::string& path);

}  // namespace ZeltoCliTest
