// Part 1.2: the source factory.
#include "component/zelto_mesh_sourcefactory.h"

#include "component/zelto_mesh_constants.h"
#include "component/zelto_mesh_streamsource.h"
#include "logging/zelto_logger.h"

namespace {

// Part 5.1: the factory module's own logger instance, built at library load.
[[maybe_unused]] ZeltoLogger logger;

}  // namespace

void ZeltoMeshSourceFactory::GetSupportedList(const weftcore::ComponentArgument& /*args*/,
                                              std::vector<std::pair<std::string, int>>* list) {
  if (list == nullptr) return;  // deviation: nothing to append to
  list->emplace_back(ZeltoMesh::kPortType, 0);
}

weftcore::Status ZeltoMeshSourceFactory::CreateSource(const std::pair<std::string, int>& type,
                                                      weftcore::StreamSource** source) {
  // Exact comparison: "Mesh" or "meshes" are not this component's type, and
  // are deliberately answered with OK and no source (Part 1.2).
  if (type.first != ZeltoMesh::kPortType) return weftcore::Status();
  if (source == nullptr) {  // deviation: the original wrote through it
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument,
                            "Null pointer")
        .SetBlock(ZeltoMesh::kComponentName);
  }
  *source = new ZeltoMeshStreamSource();
  return weftcore::Status();
}
