// WriteFile: a whole file at once, its error naming the file and the reason.
#include "file_io.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace zelto_cli {

bool WriteFile(const std::string& path, const void* bytes, size_t size, std::string* error) {
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Closer> file(std::fopen(path.c_str(), "wb"));
  if (!file) {
    *error = "cannot write " + path + ": " + std::strerror(errno);
    return false;
  }
  if ((size > 0 && std::fwrite(bytes, 1, size, file.get()) != size) ||
      std::fclose(file.release()) != 0) {
    *error = "cannot write " + path + ": " + std::strerror(errno);
    return false;
  }
  return true;
}

}  // namespace zelto_cli
