// The component's factory: one source type, "mesh".
#include "component/zelto_mesh_sourcefactory.h"

#include <exception>

#include "component/entry_guard.h"
#include "component/zelto_mesh_constants.h"
#include "component/zelto_mesh_streamsource.h"
#include "logging/zelto_logger.h"

namespace {

// The factory module's own logger, built at library load so that it reads
// its settings file before the host asks for anything.
ZeltoLogger logger;

}  // namespace

void ZeltoMeshSourceFactory::GetSupportedList(const weftcore::ComponentArgument& /*args*/,
                                              std::vector<std::pair<std::string, int>>* list) {
  if (list == nullptr) return;  // nothing to append to
  // The host loads the component inside this call and has no status to
  // receive: a list that cannot grow stays as it was, with a log line, and
  // the host then finds no "mesh" source.
  try {
    list->emplace_back(ZeltoMesh::kPortType, 0);
  } catch (const std::exception& e) {
    logger.WriteLog(ZeltoLogger::Debug, ZeltoMesh::kComponentName,
                    "[%s] GetSupportedList: %s", ZeltoMesh::kComponentName, e.what());
  }
}

weftcore::Status ZeltoMeshSourceFactory::CreateSource(const std::pair<std::string, int>& type,
                                                      weftcore::StreamSource** source) {
  // Exact comparison: "Mesh" or "meshes" are not this component's type. A
  // host asks every component in turn, so another type is answered with OK
  // and no source rather than an error.
  if (type.first != ZeltoMesh::kPortType) return weftcore::Status();
  if (source == nullptr) {  // a host bug: answered, not crashed on
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument,
                            "Null pointer")
        .SetBlock(ZeltoMesh::kComponentName);
  }
  return ZeltoMesh::WithoutExceptions("CreateSource", [source] {
    *source = new ZeltoMeshStreamSource();
    return weftcore::Status();
  });
}
