// The host's Core: a registry of open streams over the component libraries
// it loads on demand.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "weftcore/core.h"
#include "weftcore/host/component_library.h"
#include "weftcore/host/configuration.h"
#include "weftcore/host/heap_allocator.h"
#include "weftcore/stream_source.h"

namespace weftcore {
namespace host {

class HostStream;

class HostCore final : public Core {
 public:
  explicit HostCore(HostConfiguration configuration,
                    std::vector<std::string> search_paths = DefaultSearchPaths());
  // Closes every stream still open, then unloads the components.
  ~HostCore() override;

  // Reference-counted: every Initialize needs a Finalize. Finalize without a
  // matching Initialize is harmless and returns OK.
  Status Initialize() override;
  bool IsInitialized() const override;
  Status Finalize() override;

  // Creates the source through its component's factory, calls
  // RegisterMandatoryProperties and Open(core, util). On failure the source is
  // closed, released and nothing is returned.
  Status OpenStream(const std::string& key, Stream** stream) override;
  // Hands back the stream's outstanding frames, calls Close on the source,
  // releases it through its factory and forgets the stream.
  Status CloseStream(Stream* stream) override;

  HeapAllocator& allocator() { return allocator_; }

 private:
  using SupportedList = std::vector<std::pair<std::string, int>>;
  struct LoadedComponent {
    std::unique_ptr<ComponentLibrary> library;
    SupportedList supported;  // GetSupportedList's answer, asked once at load
  };

  Status FindComponent(const std::string& name, LoadedComponent** component);
  void AddComponent(const std::string& name, std::unique_ptr<ComponentLibrary> library);

  // Fixed at construction.
  const HostConfiguration configuration_;
  const std::vector<std::string> search_paths_;
  HeapAllocator allocator_;  // thread-safe on its own

  // Guarded by mutex_, which is recursive because a source opens and closes
  // its upstream streams from inside its own Open and Close.
  mutable std::recursive_mutex mutex_;
  int initialize_count_ = 0;
  std::map<std::string, LoadedComponent> components_;
  std::vector<std::unique_ptr<HostStream>> streams_;  // in opening order
  std::set<std::string> opening_;  // keys whose source is inside Open right now
};

}  // namespace host
}  // namespace weftcore
