// A throw-away Documents tree for the settings-file tests of Part 5.1:
// points $ZELTO_DOCUMENTS_DIR at a fresh directory and restores it after.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace zelto_test {

// Saves an environment variable and puts it back on destruction.
class ScopedEnvironment {
 public:
  explicit ScopedEnvironment(std::string name) : name_(std::move(name)) {
    if (const char* value = std::getenv(name_.c_str())) saved_ = value;
  }
  ~ScopedEnvironment() {
    if (saved_) {
      setenv(name_.c_str(), saved_->c_str(), 1);
    } else {
      unsetenv(name_.c_str());
    }
  }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  void Set(const std::string& value) const { setenv(name_.c_str(), value.c_str(), 1); }
  void Unset() const { unsetenv(name_.c_str()); }

 private:
  std::string name_;
  std::optional<std::string> saved_;
};

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "zelto_documents_XXXXXX").string();
    root_ = mkdtemp(pattern.data());
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& path() const { return root_; }

  // Writes `content` byte for byte to `relative`, creating its directories.
  void WriteFile(const std::string& relative, const std::string& content) const {
    const std::filesystem::path file = std::filesystem::path(root_) / relative;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    out << content;
  }
  void MakeDirectory(const std::string& relative) const {
    std::filesystem::create_directories(std::filesystem::path(root_) / relative);
  }

 private:
  std::string root_;
};

// The Documents directory of the logger for the lifetime of the object.
class TemporaryDocuments : public TemporaryDirectory {
 public:
  TemporaryDocuments() : environment_("ZELTO_DOCUMENTS_DIR") { environment_.Set(path()); }

 private:
  ScopedEnvironment environment_;
};

}  // namespace zelto_test
