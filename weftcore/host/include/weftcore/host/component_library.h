// A loaded component: dlopen, the two entry points, the component object.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "weftcore/status.h"
#include "weftcore/stream_source_factory.h"

namespace weftcore {
namespace host {

class ComponentLibrary {
 public:
  // Loads `library` (a name looked up as lib<name>.so in `search_paths`, or a
  // path containing '/'), resolves CreateComponent and DestroyComponent and
  // creates the component. Errors name the library and dlerror()'s text.
  static Status Load(const std::string& library, const std::vector<std::string>& search_paths,
                     std::unique_ptr<ComponentLibrary>* loaded);

  ~ComponentLibrary();  // DestroyComponent, then dlclose
  ComponentLibrary(const ComponentLibrary&) = delete;
  ComponentLibrary& operator=(const ComponentLibrary&) = delete;

  const std::string& name() const { return name_; }
  StreamSourceFactory* factory() const;

 private:
  ComponentLibrary() = default;
  std::string name_;
  void* handle_ = nullptr;  // dlopen handle
  DestroyComponentFunction destroy_ = nullptr;
  StandardComponent* component_ = nullptr;
};

// The directories searched by default: $WEFTCORE_COMPONENT_PATH (colon
// separated), then the directory of the running program and its ../lib.
std::vector<std::string> DefaultSearchPaths();

}  // namespace host
}  // namespace weftcore
