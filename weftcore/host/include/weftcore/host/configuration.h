// What a host serves: which component library provides which stream key.
// Hosts build it in code (the command-line host and the simulator's
// BuildHostConfiguration do); HostCore loads a library the first time one of
// its streams is opened.
#pragma once

#include <map>
#include <string>

#include "weftcore/stream_source_factory.h"

namespace weftcore {
namespace host {

struct ComponentEntry {
  // A library name, looked up as lib<name>.so in the host's search path, or
  // a path containing '/'.
  std::string library;
  // Handed to the component's GetSupportedList when the library is loaded.
  ComponentArgument args;
};

struct StreamEntry {
  std::string component;  // a key of HostConfiguration::components
  std::string type;       // the source type asked of the component's factory
};

struct HostConfiguration {
  std::map<std::string, ComponentEntry> components;
  std::map<std::string, StreamEntry> streams;  // by stream key
};

}  // namespace host
}  // namespace weftcore
