// Loading a component library: resolve the file, dlopen it, find the two
// entry points and create the component, reporting each failure with the
// library's name and the dynamic loader's own words.
#include "weftcore/host/component_library.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <system_error>

namespace weftcore {
namespace host {
namespace {

Status LoadError(const char* format, const std::string& library, const std::string& detail) {
  return Status(kLevelError, kCauseLibraryLoad, format, library.c_str(), detail.c_str())
      .SetBlock("core");
}

std::string LastDlError() {
  const char* text = dlerror();
  return text ? text : "unknown dynamic loader error";
}

bool IsRegularFile(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error);
}

// A name with '/' is a path; otherwise the first lib<name>.so found in the
// search path, and failing that the bare file name for the dynamic linker's
// own search (LD_LIBRARY_PATH, run paths).
std::string ResolveLibrary(const std::string& library,
                           const std::vector<std::string>& search_paths) {
  if (library.find('/') != std::string::npos) return library;
  const std::string file = "lib" + library + ".so";
  for (const std::string& directory : search_paths) {
    if (directory.empty()) continue;
    const std::string candidate = directory + "/" + file;
    if (IsRegularFile(candidate)) return candidate;
  }
  return file;
}

// Runs the component's CreateComponent; no exception leaves it.
Status CreateComponentOf(const std::string& name, CreateComponentFunction create,
                         StandardComponent** component) {
  try {
    *component = create();
  } catch (const std::exception& e) {
    return LoadError("CreateComponent of %s threw: %s", name, e.what());
  } catch (...) {
    return LoadError("CreateComponent of %s threw: %s", name, "unknown exception");
  }
  if (*component == nullptr) {
    return Status(kLevelError, kCauseLibraryLoad, "CreateComponent of %s returned null",
                  name.c_str())
        .SetBlock("core");
  }
  if ((*component)->GetFactory() == nullptr) {
    return Status(kLevelError, kCauseLibraryLoad, "component %s has no source factory",
                  name.c_str())
        .SetBlock("core");
  }
  return Status();
}

}  // namespace

Status ComponentLibrary::Load(const std::string& library,
                              const std::vector<std::string>& search_paths,
                              std::unique_ptr<ComponentLibrary>* loaded) {
  if (loaded == nullptr) {
    return Status(kLevelError, kCauseInvalidArgument, "loaded is null").SetBlock("core");
  }
  if (library.empty()) {
    return Status(kLevelError, kCauseInvalidArgument, "component library name is empty")
        .SetBlock("core");
  }
  const std::string path = ResolveLibrary(library, search_paths);
  dlerror();
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    return LoadError("cannot load component library %s: %s", library, LastDlError());
  }
  std::unique_ptr<ComponentLibrary> result(new ComponentLibrary());
  result->name_ = library;
  result->handle_ = handle;  // from here on the destructor closes it

  dlerror();
  auto create =
      reinterpret_cast<CreateComponentFunction>(dlsym(handle, kCreateComponentSymbol));
  if (create == nullptr) {
    return LoadError("component library %s has no CreateComponent: %s", library,
                     LastDlError());
  }
  auto destroy =
      reinterpret_cast<DestroyComponentFunction>(dlsym(handle, kDestroyComponentSymbol));
  if (destroy == nullptr) {
    return LoadError("component library %s has no DestroyComponent: %s", library,
                     LastDlError());
  }
  result->destroy_ = destroy;
  Status status = CreateComponentOf(library, create, &result->component_);
  if (status.IsError()) return status;
  *loaded = std::move(result);
  return Status();
}

ComponentLibrary::~ComponentLibrary() {
  if (component_ != nullptr && destroy_ != nullptr) destroy_(component_);
  if (handle_ != nullptr) dlclose(handle_);
}

StreamSourceFactory* ComponentLibrary::factory() const {
  return component_ ? component_->GetFactory() : nullptr;
}

std::vector<std::string> DefaultSearchPaths() {
  std::vector<std::string> paths;
  if (const char* variable = std::getenv("WEFTCORE_COMPONENT_PATH")) {
    const std::string text = variable;
    size_t begin = 0;
    while (begin <= text.size()) {
      size_t end = text.find(':', begin);
      if (end == std::string::npos) end = text.size();
      if (end > begin) paths.push_back(text.substr(begin, end - begin));
      begin = end + 1;
    }
  }
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (!error) {
    const std::filesystem::path directory = program.parent_path();
    paths.push_back(directory.string());
    paths.push_back((directory / ".." / "lib").lexically_normal().string());
  }
  return paths;
}

}  // namespace host
}  // namespace weftcore
