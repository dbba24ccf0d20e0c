// A host's configuration: which component library serves which stream key.
//
// JSON form:
//   {
//     "components": {
//       "mesh_component": {"library": "component_zelto_mesh", "args": {"k": "v"}}
//     },
//     "streams": {
//       "mesh": {"component": "mesh_component", "type": "mesh"}
//     }
//   }
// "library" is a library name (searched as lib<name>.so in the search path)
// or a path containing '/'. "args" reach the component's GetSupportedList.
#pragma once

#include <map>
#include <string>

#include "weftcore/status.h"
#include "weftcore/stream_source_factory.h"

namespace weftcore {
namespace host {

struct ComponentEntry {
  std::string library;
  ComponentArgument args;
};

struct StreamEntry {
  std::string component;  // a key of HostConfiguration::components
  std::string type;       // the source type asked of the factory
};

struct HostConfiguration {
  std::map<std::string, ComponentEntry> components;
  std::map<std::string, StreamEntry> streams;
};

Status ParseConfiguration(const std::string& json_text, HostConfiguration* configuration);
Status LoadConfigurationFile(const std::string& path, HostConfiguration* configuration);

}  // namespace host
}  // namespace weftcore
