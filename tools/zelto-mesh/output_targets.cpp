// CheckOutputTargets and PrepareOutputTargets.
#include "output_targets.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

namespace zelto_cli {
namespace {

namespace fs = std::filesystem;

// The frame files in `directory` (none when it does not exist), sorted.
std::vector<fs::path> FrameFiles(const std::string& directory) {
  std::vector<fs::path> found;
  std::error_code code;
  for (fs::directory_iterator entry(directory, code), end; !code && entry != end;
       entry.increment(code)) {
    if (IsFrameFileName(entry->path().filename().string())) found.push_back(entry->path());
  }
  std::sort(found.begin(), found.end());
  return found;
}

bool IsDirectory(const std::string& path) {
  std::error_code code;
  return fs::is_directory(path, code);
}

// Creates `directory` and checks that this process may add files to it.
bool MakeWritableDirectory(const std::string& directory, std::string* error) {
  std::error_code code;
  fs::create_directories(directory, code);
  if (code) {
    *error = "cannot create " + directory + ": " + code.message();
    return false;
  }
  if (access(directory.c_str(), W_OK | X_OK) != 0) {
    *error = "cannot write in " + directory + ": " + std::strerror(errno);
    return false;
  }
  return true;
}

// Checks that `directory` exists or can be created: its nearest existing
// ancestor is a directory this process may add to. `option` and `target`
// name what the user gave.
bool CheckCreatable(const std::string& option, const std::string& target,
                    const std::string& directory, std::string* error) {
  std::error_code code;
  fs::path existing = directory;
  while (!fs::exists(existing, code) && existing.has_relative_path()) {
    existing = existing.parent_path();
    if (existing.empty()) existing = ".";
  }
  const std::string prefix = option + " " + target + ": ";
  if (!IsDirectory(existing.string())) {
    *error = prefix + existing.string() + " is not a directory";
    return false;
  }
  if (access(existing.c_str(), W_OK | X_OK) != 0) {
    *error = prefix + "cannot write in " + existing.string() + ": " + std::strerror(errno);
    return false;
  }
  return true;
}

// The directory that will hold the file `path`.
std::string ParentOf(const std::string& path) {
  const fs::path parent = fs::path(path).parent_path();
  return parent.empty() ? "." : parent.string();
}

}  // namespace

bool CheckOutputTargets(const RunOptions& options, std::string* error) {
  const std::string& out = options.output.directory;
  if (options.output.format != OutputFormat::kNone) {
    if (!CheckCreatable("--out", out, out, error)) return false;
    const std::vector<fs::path> old = FrameFiles(out);
    if (!old.empty() && !options.replace) {
      *error = "--out " + out + " holds " + std::to_string(old.size()) +
               (old.size() == 1 ? " frame file" : " frame files") + " of another run (" +
               old.front().filename().string() +
               (old.size() == 1 ? "" : " ... " + old.back().filename().string()) +
               "): add --replace to remove them first, or choose another --out";
      return false;
    }
  }
  for (const auto& [option, path] :
       {std::pair("--preview", &options.preview), std::pair("--stats", &options.stats)}) {
    if (path->empty()) continue;
    if (IsDirectory(*path)) {
      *error = std::string(option) + " " + *path + ": a directory, expected a file name";
      return false;
    }
    if (!CheckCreatable(option, *path, ParentOf(*path), error)) return false;
  }
  return true;
}

bool PrepareOutputTargets(const RunOptions& options, std::ofstream* stats_file,
                          std::string* error) {
  if (options.output.format != OutputFormat::kNone) {
    if (!MakeWritableDirectory(options.output.directory, error)) return false;
    for (const fs::path& old :
         options.replace ? FrameFiles(options.output.directory) : std::vector<fs::path>()) {
      std::error_code code;
      if (!fs::remove(old, code) && code) {
        *error = "cannot remove " + old.string() + ": " + code.message();
        return false;
      }
    }
  }
  if (!options.preview.empty() && !MakeWritableDirectory(ParentOf(options.preview), error)) {
    return false;
  }
  if (!options.stats.empty()) {
    if (!MakeWritableDirectory(ParentOf(options.stats), error)) return false;
    stats_file->open(options.stats, std::ios::out | std::ios::trunc);
    if (!*stats_file) {
      *error = "cannot write " + options.stats + ": " + std::strerror(errno);
      return false;
    }
  }
  return true;
}

}  // namespace zelto_cli
