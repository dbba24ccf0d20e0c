// Directory helpers for recordings (std::filesystem without exceptions).
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

namespace ZeltoSim {

bool IsDirectory(const std::string& path);
bool IsRegularFile(const std::string& path);
// Full paths of the regular files in `directory` whose names end in
// `extension` (".png"), sorted by name with digit runs compared as numbers
// (2.png before 10.png); empty when the directory is absent.
std::vector<std::string> ListFiles(const std::string& directory, const std::string& extension);
// The same for any of `extensions`, compared without regard to case.
std::vector<std::string> ListFiles(const std::string& directory,
                                   std::initializer_list<const char*> extensions);
// Names (not paths) of the subdirectories of `directory`, sorted the same way.
std::vector<std::string> ListSubdirectories(const std::string& directory);
// The size of a regular file; -1 when it cannot be read.
long long FileSize(const std::string& path);

}  // namespace ZeltoSim
