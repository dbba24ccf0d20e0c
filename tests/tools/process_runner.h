// Runs the built zelto-mesh as a child process and collects what it printed,
// as a user's shell would see it.
#pragma once

#include <string>
#include <vector>

namespace ZeltoCliTest {

struct ProcessResult {
  int exitCode = -1;  // -1 when the child did not exit normally
  std::string out;
  std::string err;
};

// ZELTO_BINARY_DIR/zelto-mesh in `directory` with stdout and stderr to files,
// or stderr on a pseudo-terminal, and this environment plus `environment`.
ProcessResult RunZeltoMesh(const std::vector<std::string>& arguments, const std::string& directory,
                           const std::vector<std::string>& environment = {}, bool terminal = false);

// A fresh, empty directory named after the running test, under this build's
// tree: builds of other presets may run the same tests at the same time.
std::string FreshDirectory(const std::string& name);
std::string ReadFileBytes(const std::string& path);

}  // namespace ZeltoCliTest
