// Runs build/<preset>/bin/zelto-mesh as a child process and collects what it
// printed, as a user's shell would see it (stdout and stderr are files, not
// terminals).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ZeltoCliTest {

struct ProcessResult {
  int exitCode = -1;  // -1 when the child did not exit normally
  std::string out;
  std::string err;
};

// Runs ZELTO_BINARY_DIR/zelto-mesh with `arguments` in `workingDirectory`
// (created if missing), with this process's environment plus `environment`
// ("NAME=value" entries). Fails the calling test on a spawn error.
ProcessResult RunZeltoMesh(const std::vector<std::string>& arguments,
                           const std::string& workingDirectory,
                           const std::vector<std::string>& environment = {});

// Runs zelto-mesh with stderr on a pseudo-terminal, as in a user's shell;
// `err` is what the terminal received.
ProcessResult RunZeltoMeshOnTerminal(const std::vector<std::string>& arguments,
                                     const std::string& workingDirectory);

// A fresh, empty directory for one test under the test's temporary directory.
std::string FreshDirectory(const std::string& name);

std::string ReadFileBytes(const std::string& path);

}  // namespace ZeltoCliTest
