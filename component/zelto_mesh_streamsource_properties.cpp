// The mesh source's own property handlers: log level, channel information,
// frame rate and the mesh algorithm configuration. They run on client
// threads, next to the frame thread.
#include "component/stream_source_logger.h"
#include "component/zelto_mesh_constants.h"
#include "component/zelto_mesh_streamsource.h"

namespace {

// Clients of the log level match on the block of the application-wide
// settings stream, which answers a null record with the same status.
constexpr char kLogLevelBlock[] = "Zelto";
constexpr char kMeshDataDescription[] = "Mesh Data";

weftcore::Status InvalidArgument(const char* message, const char* block) {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument, "%s", message)
      .SetBlock(block);
}

// The one Debug line each of these handlers writes on entry.
void LogEntry(const char* format, const char* key, const void* property) {
  StreamSourceLogger().WriteLog(ZeltoLogger::Debug, ZeltoMesh::kComponentName, format,
                                ZeltoMesh::kComponentName, key, property);
}

}  // namespace

// --- Log level. The key logged is always the record's own key. --------------

weftcore::Status ZeltoMeshStreamSource::Get(const std::string& /*key*/,
                                            Zelto::ZeltoLogLevelProperty_* property) {
  LogEntry("[%s] Get ZeltoLogLevelProperty by key=%s prop=%p\n", Zelto::kZeltoLogLevelKey,
           property);
  if (property == nullptr) return InvalidArgument("property is null.", kLogLevelBlock);
  property->logLevel = StreamSourceLogger().GetLogLevel();
  return weftcore::Status();
}

weftcore::Status ZeltoMeshStreamSource::Set(const std::string& /*key*/,
                                            const Zelto::ZeltoLogLevelProperty_* property) {
  LogEntry("[%s] Set ZeltoLogLevelProperty by key=%s prop=%p\n", Zelto::kZeltoLogLevelKey,
           property);
  if (property == nullptr) return InvalidArgument("property is null.", kLogLevelBlock);
  // 7 has no enumerator but is accepted: clients use it as "errors only".
  const int32_t level = property->logLevel;
  if (level < ZeltoLogger::Verbose || level > ZeltoLogger::Silent) {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument,
                            "property log level %d is out of range.", static_cast<int>(level))
        .SetBlock(ZeltoMesh::kComponentName);
  }
  // Only this module's logger: the other modules keep their levels.
  StreamSourceLogger().SetLogLevel(property->logLevel);
  return weftcore::Status();
}

// --- Channel information (Set is the base's: never settable). -------------

weftcore::Status ZeltoMeshStreamSource::Get(const std::string& /*key*/,
                                            weftcore::ChannelInfoProperty* property) {
  if (property == nullptr) return InvalidArgument("Null pointer", ZeltoMesh::kComponentName);
  // emplace keeps a channel 0 that the client sent in.
  property->channels.emplace(
      0, weftcore::ChannelInfo{ZeltoMesh::kRawDataTypeMesh, kMeshDataDescription});
  return weftcore::Status();
}

// --- Frame rate. Get always answers 30/1, whatever was set: the rate only
// selects the layout and the input, the frames come as fast as the camera's. -

weftcore::Status ZeltoMeshStreamSource::Get(const std::string& /*key*/,
                                            weftcore::FrameRateProperty* property) {
  if (property == nullptr) return InvalidArgument("Null pointer", ZeltoMesh::kComponentName);
  property->num = 30;
  property->denom = 1;
  return weftcore::Status();
}

weftcore::Status ZeltoMeshStreamSource::Set(const std::string& /*key*/,
                                            const weftcore::FrameRateProperty* property) {
  if (property == nullptr) return InvalidArgument("Null pointer", ZeltoMesh::kComponentName);
  // 30 asks for the flat layout, 15 for playback; anything else clears both.
  std::lock_guard<std::mutex> lock(flagsMutex);
  frameRate30 = property->num == 30;
  usePlayback = property->num == 15;
  return weftcore::Status();
}

// --- Mesh algorithm configuration. -----------------------------------------

weftcore::Status ZeltoMeshStreamSource::Get(const std::string& key,
                                            ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_* property) {
  LogEntry("[%s] Get ZeltoMeshAlgorithmConfigProperty by key=%s prop=%p\n", key.c_str(),
           property);
  if (property == nullptr) return InvalidArgument("property is null.", ZeltoMesh::kComponentName);
  property->meshReductionLevel = meshBuilder.meshReductionLevel;
  property->resetTrianglePeriod = meshBuilder.resetTrianglePeriod;
  return weftcore::Status();
}

weftcore::Status ZeltoMeshStreamSource::Set(
    const std::string& key, const ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_* property) {
  LogEntry("[%s] Set ZeltoMeshAlgorithmConfigProperty by key=%s prop=%p\n", key.c_str(),
           property);
  if (property == nullptr) return InvalidArgument("property is null.", ZeltoMesh::kComponentName);
  // All tests before any store: a failed Set changes nothing.
  if (property->meshReductionLevel < 0) {
    return InvalidArgument("mesh reduction level must be equal or greater than zero.",
                           ZeltoMesh::kComponentName);
  }
  if (property->resetTrianglePeriod < 0) {
    return InvalidArgument("resetTrianglePeriod must be equal or greater than zero.",
                           ZeltoMesh::kComponentName);
  }
  meshBuilder.meshReductionLevel = property->meshReductionLevel;
  // A period of 0 is accepted and keeps the current one.
  if (property->resetTrianglePeriod != 0) {
    meshBuilder.resetTrianglePeriod = property->resetTrianglePeriod;
  }
  return weftcore::Status();
}
