// InfoCommand: what the component offers, read from a "mesh" source opened as
// `run` opens it on the synthetic scene.
#include "info_command.h"

#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "command_line.h"
#include "mesh_session.h"
#include "property_client.h"
#include "status_text.h"
#include "weftcore/host/component_library.h"
#include "weftcore/host/host_stream.h"

namespace zelto_cli {

int InfoCommand() {
  std::unique_ptr<weftcore::host::ComponentLibrary> library;
  weftcore::Status status = weftcore::host::ComponentLibrary::Load(
      ZeltoSim::kMeshLibraryName, weftcore::host::DefaultSearchPaths(), &library);
  if (status.IsError()) {
    std::cerr << ErrorLine(std::string("load ") + ZeltoSim::kMeshLibraryName, status) << "\n";
    return kExitFailure;
  }
  std::vector<std::pair<std::string, int>> types;
  library->factory()->GetSupportedList(weftcore::ComponentArgument{}, &types);
  std::string text = std::string("component ") + ZeltoSim::kMeshLibraryName + "\n";
  text += "source types";
  for (const auto& [name, version] : types) {
    text += " " + name + " (" + std::to_string(version) + ")";
  }
  text += "\n";

  // A "mesh" source as `run` opens it on the synthetic scene. The options are
  // a named object, not a temporary: GCC 12 at -O3 takes the temporary's
  // strings for uninitialized when it inlines their destructors.
  const ZeltoSim::HostOptions syntheticScene;
  MeshSession session(syntheticScene);
  status = session.Open();
  if (status.IsError()) {
    std::cerr << ErrorLine("open mesh", status) << "\n";
    return kExitFailure;
  }
  auto* stream = dynamic_cast<weftcore::host::HostStream*>(session.stream());
  if (stream == nullptr) {
    std::cerr << "error: open mesh: not a stream of the host substitute\n";
    return kExitFailure;
  }
  text += "properties of a \"mesh\" source after Open\n";
  for (const std::string& key : stream->utility()->PropertyKeys()) {
    Json value;
    status = GetPropertyJson(stream, key, &value);
    if (status.IsError()) {
      std::cerr << ErrorLine("get " + key, status) << "\n";
      return kExitFailure;
    }
    text += "  " + key + " " + value.dump() + "\n";
  }
  std::cout << text;
  return kExitOk;
}

}  // namespace zelto_cli
