#include "directory_listing.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string_view>
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

// Digit runs compare by their numbers, so that 2.png comes before 10.png;
// equal numbers with more leading zeros come first, and other characters
// compare as text. Plain text order when both names have no digits.
bool NumberAwareLess(const std::string& a, const std::string& b) {
  const auto digit = [](char c) { return c >= '0' && c <= '9'; };
  size_t i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (digit(a[i]) && digit(b[j])) {
      const size_t start_i = i, start_j = j;
      while (a[i] == '0' && i + 1 < a.size() && digit(a[i + 1])) ++i;
      while (b[j] == '0' && j + 1 < b.size() && digit(b[j + 1])) ++j;
      size_t end_i = i, end_j = j;
      while (end_i < a.size() && digit(a[end_i])) ++end_i;
      while (end_j < b.size() && digit(b[end_j])) ++end_j;
      const std::string_view run_a(a.data() + i, end_i - i), run_b(b.data() + j, end_j - j);
      if (run_a.size() != run_b.size()) return run_a.size() < run_b.size();
      if (run_a != run_b) return run_a < run_b;
      if (i - start_i != j - start_j) return i - start_i > j - start_j;
      i = end_i;
      j = end_j;
    } else {
      if (a[i] != b[j]) return a[i] < b[j];
      ++i;
      ++j;
    }
  }
  return a.size() - i < b.size() - j;
}

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
  std::sort(found.begin(), found.end(), NumberAwareLess);
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

std::vector<std::string> ListFiles(const std::string& directory,
                                   std::initializer_list<const char*> extensions) {
  return Collect(
      directory,
      [&extensions](const fs::directory_entry& entry) {
        std::error_code error;
        std::string extension = entry.path().extension().string();
        for (char& c : extension) {
          c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
        return entry.is_regular_file(error) &&
               std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
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
