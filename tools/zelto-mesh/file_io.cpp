// WriteFile: write beside the target, then rename over it in one step.
#include "file_io.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>

namespace zelto_cli {
namespace {

// The partial file being written, for the signal handler: the name is
// complete before `writing` is set, and the handler only reads it.
char partial_path[4096];
volatile std::sig_atomic_t writing = 0;

extern "C" void RemovePartialFileAndExit(int signal_number) {
  if (writing) unlink(partial_path);
  std::signal(signal_number, SIG_DFL);
  std::raise(signal_number);
}

// Marks `path` as the file the handler removes, for as long as it lives.
class PartialFile {
 public:
  explicit PartialFile(const std::string& path) : path_(path) {
    if (path.size() < sizeof partial_path) {
      std::memcpy(partial_path, path.c_str(), path.size() + 1);
      std::atomic_signal_fence(std::memory_order_seq_cst);
      writing = 1;
    }
  }
  ~PartialFile() {
    writing = 0;
    if (!kept_) std::remove(path_.c_str());
  }
  PartialFile(const PartialFile&) = delete;
  PartialFile& operator=(const PartialFile&) = delete;

  // Renames the file to `final_path`; it is no longer removed.
  bool MoveTo(const std::string& final_path) {
    writing = 0;
    kept_ = std::rename(path_.c_str(), final_path.c_str()) == 0;
    return kept_;
  }

 private:
  std::string path_;
  bool kept_ = false;
};

}  // namespace

bool WriteFile(const std::string& path, const void* bytes, size_t size, std::string* error) {
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  const auto fail = [&path, error] {
    *error = "cannot write " + path + ": " + std::strerror(errno);
    return false;
  };
  PartialFile partial(path + ".partial");
  std::unique_ptr<std::FILE, Closer> file(std::fopen((path + ".partial").c_str(), "wb"));
  if (!file) return fail();
  if ((size > 0 && std::fwrite(bytes, 1, size, file.get()) != size) ||
      std::fclose(file.release()) != 0) {
    return fail();
  }
  return partial.MoveTo(path) || fail();
}

void RemovePartialFileOnSignals() {
  for (const int signal_number : {SIGINT, SIGTERM, SIGHUP}) {
    std::signal(signal_number, RemovePartialFileAndExit);
  }
}

}  // namespace zelto_cli
