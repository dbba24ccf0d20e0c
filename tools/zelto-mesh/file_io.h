// Whole-file writes that never leave a truncated file under the final name,
// with an error text that names the file.
#pragma once

#include <cstddef>
#include <string>

namespace zelto_cli {

// Writes `size` bytes to PATH.partial in the same directory, then renames it
// to `path`, replacing the file. On failure the partial file is removed and
// `error` is "cannot write PATH: REASON". Ctrl-C, a hang-up or termination
// while a file is being written removes the partial file before the program
// ends (see RemovePartialFileOnSignals).
bool WriteFile(const std::string& path, const void* bytes, size_t size, std::string* error);
inline bool WriteFile(const std::string& path, const std::string& bytes, std::string* error) {
  return WriteFile(path, bytes.data(), bytes.size(), error);
}

// Installs the handlers of SIGINT, SIGTERM and SIGHUP that remove the file
// WriteFile is writing, then end the program as the signal would have.
void RemovePartialFileOnSignals();

}  // namespace zelto_cli
