#include "directory_listing.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace ZeltoSim {
namespace fs = std::filesystem;

bool IsDirectory(const std::string& path) {
  std::error_code error;
  return fs::is_directory(path, error);
}

bool IsRegularFile(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

namespace {

template <typename Keep, typename Take>
std::vector<std::string> Collect(const std::string& directory, Keep keep, Take take) {
  std::vector<std::string> found;
  std::error_code error;
  fs::directory_iterator it(directory, error);
  if (error) return found;
  for (const fs::directory_iterator end; it != end; it.increment(error)) {
    if (error) break;
    if (keep(*it)) found.push_back(take(*it));
  }
  std::sort(found.begin(), found.end());
  return found;
}

}  // namespace

std::vector<std::string> ListFiles(const std::string& directory, const std::string& extension) {
  return Collect(
      directory,
      [&extension](const fs::directory_entry& entry) {
        std::error_code error;
        return entry.is_regular_file(error) && entry.path().extension() == extension;
      },
      [](const fs::directory_entry& entry) { return entry.path().string(); });
}

std::vector<std::string> ListSubdirectories(const std::string& directory) {
  return Collect(
      directory,
      [](const fs::directory_entry& entry) {
        std::error_code error;
        return entry.is_directory(error);
      },
      [](const fs::directory_entry& entry) { return entry.path().filename().string(); });
}

long long FileSize(const std::string& path) {
  std::error_code error;
  const auto size = fs::file_size(path, error);
  return error ? -1 : static_cast<long long>(size);
}

}  // namespace ZeltoSim
