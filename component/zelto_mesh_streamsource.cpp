// The mesh source's construction, Open and Close: the upstream streams it
// holds from Open to Close, and the module's logger.
#include "component/zelto_mesh_streamsource.h"

#include <utility>

#include "component/entry_guard.h"
#include "component/stream_source_logger.h"
#include "component/zelto_mesh_constants.h"
#include "properties/zelto_runtime_settings_property.h"
#include "properties/zelto_tof_properties.h"

ZeltoLogger& StreamSourceLogger() {
  // Function-local so that no other translation unit can see it unbuilt.
  static ZeltoLogger instance;
  return instance;
}

namespace {

// Binding the module's logger here builds it during the library's static
// initialisation, so it has read its settings file before any source logs.
[[maybe_unused]] ZeltoLogger& logger = StreamSourceLogger();

weftcore::Status NullPointer() {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument, "Null pointer")
      .SetBlock(ZeltoMesh::kComponentName);
}

}  // namespace

ZeltoMeshStreamSource::ZeltoMeshStreamSource(Clock clock) : now(std::move(clock)) {
  // A client reading the mask settings before any Set sees the threshold
  // that masking uses.
  maskSettings.maskThreshold = maskedPointCloud.maskThreshold;
}

// Closes nothing and frees nothing: the host calls Close first.
ZeltoMeshStreamSource::~ZeltoMeshStreamSource() = default;

weftcore::Status ZeltoMeshStreamSource::Open(weftcore::Core* core,
                                             weftcore::StreamSourceUtility* util) {
  // A failure part-way leaves what was opened to Close, as for any failed Open.
  return ZeltoMesh::WithoutExceptions("Open", [&] { return OpenStreams(core, util); });
}

void ZeltoMeshStreamSource::RegisterMandatoryProperties(weftcore::StreamSourceUtility* util) {
  try {
    weftcore::StreamSource::RegisterMandatoryProperties(util);
  } catch (const std::exception& e) {
    StreamSourceLogger().WriteLog(ZeltoLogger::Debug, ZeltoMesh::kComponentName,
                                  "[%s] RegisterMandatoryProperties: %s",
                                  ZeltoMesh::kComponentName, e.what());
  }
}

weftcore::Status ZeltoMeshStreamSource::OpenStreams(weftcore::Core* core,
                                                    weftcore::StreamSourceUtility* util) {
  // A host bug is answered with a status rather than a crash inside the host.
  if (util == nullptr || core == nullptr) return NullPointer();

  weftcore::Status status = util->GetAllocator("", &allocator);
  if (status.IsError()) return status.AddTrace(nullptr, 0);

  // A property that cannot be registered leaves the stream usable without it.
  util->CreateProperty<Zelto::ZeltoLogLevelProperty_, ZeltoMeshStreamSource>(
      Zelto::kZeltoLogLevelKey, this);
  util->CreateProperty<ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_, ZeltoMeshStreamSource>(
      ZeltoMesh::kZeltoMeshAlgorithmConfigKey, this);
  util->CreateProperty<ZeltoMesh::ZeltoMeshMaskSettingsProperty_, ZeltoMeshStreamSource>(
      ZeltoMesh::kZeltoMeshMaskSettingsKey, this);

  this->core = core;
  status = core->Initialize();
  if (status.IsError()) return status.AddTrace(nullptr, 0);

  status = core->OpenStream(Zelto::kStreamKey, &zeltoStream);
  if (status.IsError()) return status.AddTrace(nullptr, 0);

  // Log at the application's level; an out-of-range level is refused by the
  // handler and the logger keeps its own.
  Zelto::ZeltoLogLevelProperty_ logLevel;
  logLevel.logLevel = ZeltoLogger::Silent;
  status = zeltoStream->GetProperty(Zelto::kZeltoLogLevelKey, &logLevel);
  if (status.IsError()) return status.AddTrace(nullptr, 0);
  Set(Zelto::kZeltoLogLevelKey, &logLevel);

  // A device without a recording has no player stream. That is no reason to
  // refuse live frames, so the status is dropped; Start then finds no input
  // only if a client asked for playback.
  core->OpenStream(ZeltoTof::kCamera2StreamPlaybackKey, &playerStream);

  status = core->OpenStream(ZeltoTof::kCamera2StreamKey, &camera2Stream);
  if (status.IsError()) return status.AddTrace(nullptr, 0);

  // The camera computes the point cloud only on request; its other targets
  // belong to other clients and stay as they are. A camera that refuses
  // leaves frames without a point cloud, which GetFrames drops quietly.
  ZeltoTof::ZeltoTofProcessTargetsProperty_ targets;
  if (camera2Stream->GetProperty(ZeltoTof::kZeltoTofProcessTargetsKey, &targets).ok()) {
    targets.processPointCloud = true;
    camera2Stream->SetProperty(ZeltoTof::kZeltoTofProcessTargetsKey, &targets);
  }
  return weftcore::Status();
}

weftcore::Status ZeltoMeshStreamSource::Close() {
  return ZeltoMesh::WithoutExceptions("Close", [this] { return CloseStreams(); });
}

weftcore::Status ZeltoMeshStreamSource::CloseStreams() {
  // A host may call Close twice (once itself, once on shutdown): each array
  // is freed once and every pointer nulled, so the second call frees nothing.
  meshBuilder.ReleaseArrays();

  // Close never fails: there is nothing a caller could do about a stream
  // that will not close, so the statuses are dropped.
  if (segmentationStream != nullptr) {
    core->CloseStream(segmentationStream);
    segmentationStream = nullptr;
  }
  if (zeltoStream != nullptr) {
    core->CloseStream(zeltoStream);
    zeltoStream = nullptr;
  }
  if (core != nullptr) {
    // No null test: the core answers a null stream with a status, which is
    // dropped like the others.
    core->CloseStream(camera2Stream);
    camera2Stream = nullptr;
    core->CloseStream(playerStream);
    playerStream = nullptr;
    core->Finalize();
  }
  // The input is one of the streams just closed.
  inputStream = nullptr;
  return weftcore::Status();
}
