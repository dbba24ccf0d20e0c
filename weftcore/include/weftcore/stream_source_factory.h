// What a component library gives the host: the component object with its
// source factory, created and destroyed through the library's two exported,
// unmangled entry points.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "weftcore/export.h"
#include "weftcore/status.h"
#include "weftcore/stream_source.h"

namespace weftcore {

// Arguments the host passes to a component: a configuration's key/value pairs.
struct ComponentArgument {
  std::map<std::string, std::string> values;
};

class WEFTCORE_API StreamSourceFactory {
 public:
  StreamSourceFactory() = default;
  StreamSourceFactory(const StreamSourceFactory&) = delete;
  StreamSourceFactory& operator=(const StreamSourceFactory&) = delete;

  // Shared with components built elsewhere: keep the order of the virtual
  // functions.
  virtual void GetSupportedList(const ComponentArgument& args,
                                std::vector<std::pair<std::string, int>>* list) = 0;
  virtual Status CreateSource(const std::pair<std::string, int>& type,
                              StreamSource** source) = 0;
  // Default: destroys a non-null source through its virtual destructor.
  virtual void ReleaseSource(StreamSource* source);
  virtual ~StreamSourceFactory();
};

// The object a component library hands to the host. Owns its factory.
class WEFTCORE_API StandardComponent {
 public:
  explicit StandardComponent(StreamSourceFactory* factory);
  StandardComponent(const StandardComponent&) = delete;
  StandardComponent& operator=(const StandardComponent&) = delete;
  virtual ~StandardComponent();

  StreamSourceFactory* GetFactory() const { return factory_; }

 private:
  StreamSourceFactory* factory_;
};

// Signatures of the exported, unmangled entry points of a component library.
using CreateComponentFunction = StandardComponent* (*)();
using DestroyComponentFunction = void (*)(StandardComponent*);
constexpr char kCreateComponentSymbol[] = "CreateComponent";
constexpr char kDestroyComponentSymbol[] = "DestroyComponent";

}  // namespace weftcore
