// Whole-file writes with an error text that names the file.
#pragma once

#include <cstddef>
#include <string>

namespace zelto_cli {

// Writes `size` bytes to `path`, replacing the file. False with `error`
// ("cannot write PATH: REASON") on failure.
bool WriteFile(const std::string& path, const void* bytes, size_t size, std::string* error);
inline bool WriteFile(const std::string& path, const std::string& bytes, std::string* error) {
  return WriteFile(path, bytes.data(), bytes.size(), error);
}

}  // namespace zelto_cli
