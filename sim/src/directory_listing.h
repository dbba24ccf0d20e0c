// Directory helpers for recordings (std::filesystem without exceptions).
#pragma once

#include <string>
#include <vector>

namespace ZeltoSim {

bool IsDirectory(const std::string& path);
bool IsRegularFile(const std::string& path);
// Full paths of the regular files in `directory` whose names end in
// `extension` (".png"), sorted by name; empty when the directory is absent.
std::vector<std::string> ListFiles(const std::string& directory, const std::string& extension);
// Names (not paths) of the subdirectories of `directory`, sorted.
std::vector<std::string> ListSubdirectories(const std::string& directory);
// The size of a regular file; -1 when it cannot be read.
long long FileSize(const std::string& path);

}  // namespace ZeltoSim
