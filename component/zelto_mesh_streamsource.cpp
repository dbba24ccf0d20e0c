// Part 1.3: the mesh source's construction, Open and Close, and the stream
// source module's logger.
#include "component/zelto_mesh_streamsource.h"

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

// Part 5.1: the module's `logger`. Binding it here builds the instance during
// the library's static initialisation, when it reads the settings file.
[[maybe_unused]] ZeltoLogger& logger = StreamSourceLogger();

weftcore::Status NullPointer() {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument, "Null pointer")
      .SetBlock(ZeltoMesh::kComponentName);
}

}  // namespace

ZeltoMeshStreamSource::ZeltoMeshStreamSource() {
  // Part 3.4: the threshold starts at 55 in the settings and in
  // maskedPointCloud (whose declaration already holds 55).
  maskSettings.maskThreshold = maskedPointCloud.maskThreshold;
}

// Closes nothing and frees nothing: the framework calls Close first.
ZeltoMeshStreamSource::~ZeltoMeshStreamSource() = default;

weftcore::Status ZeltoMeshStreamSource::Open(weftcore::Core* core,
                                             weftcore::StreamSourceUtility* util) {
  // Deviation: null arguments fail instead of crashing.
  if (util == nullptr || core == nullptr) return NullPointer();

  // 1. The default allocator.
  weftcore::Status status = util->GetAllocator("", &allocator);
  if (status.IsError()) return status.AddTrace(nullptr, 0);

  // 2. Own properties; a failed registration does not stop Open.
  util->CreateProperty<Zelto::ZeltoLogLevelProperty_, ZeltoMeshStreamSource>(
      Zelto::kZeltoLogLevelKey, this);
  util->CreateProperty<ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_, ZeltoMeshStreamSource>(
      ZeltoMesh::kZeltoMeshAlgorithmConfigKey, this);
  util->CreateProperty<ZeltoMesh::ZeltoMeshMaskSettingsProperty_, ZeltoMeshStreamSource>(
      ZeltoMesh::kZeltoMeshMaskSettingsKey, this);

  // 3. The core.
  this->core = core;
  status = core->Initialize();
  if (status.IsError()) return status.AddTrace(nullptr, 0);

  // 4. The application-wide settings stream.
  status = core->OpenStream(Zelto::kStreamKey, &zeltoStream);
  if (status.IsError()) return status.AddTrace(nullptr, 0);

  // 5. Log at the level of the upstream stream.
  Zelto::ZeltoLogLevelProperty_ logLevel;
  logLevel.logLevel = ZeltoLogger::Silent;
  status = zeltoStream->GetProperty(Zelto::kZeltoLogLevelKey, &logLevel);
  if (status.IsError()) return status.AddTrace(nullptr, 0);
  Set(Zelto::kZeltoLogLevelKey, &logLevel);

  // 6. Recorded frames, if there are any: a missing player is not an error.
  core->OpenStream(ZeltoTof::kCamera2StreamPlaybackKey, &playerStream);

  // 7. The live camera.
  status = core->OpenStream(ZeltoTof::kCamera2StreamKey, &camera2Stream);
  if (status.IsError()) return status.AddTrace(nullptr, 0);

  // 8. Switch the camera's point cloud on, keeping its other targets.
  ZeltoTof::ZeltoTofProcessTargetsProperty_ targets;
  if (camera2Stream->GetProperty(ZeltoTof::kZeltoTofProcessTargetsKey, &targets).ok()) {
    targets.processPointCloud = true;
    camera2Stream->SetProperty(ZeltoTof::kZeltoTofProcessTargetsKey, &targets);
  }
  return weftcore::Status();
}

weftcore::Status ZeltoMeshStreamSource::Close() {
  // 1. Deviation: the original freed two of the four arrays again on a second
  // Close; ReleaseArrays frees each once and nulls all four pointers.
  meshBuilder.ReleaseArrays();

  // 2. to 4. Statuses are discarded: Close never fails.
  if (segmentationStream != nullptr) {
    core->CloseStream(segmentationStream);
    segmentationStream = nullptr;
  }
  if (zeltoStream != nullptr) {
    core->CloseStream(zeltoStream);
    zeltoStream = nullptr;
  }
  if (core != nullptr) {
    // Closed without a null test, as the original does (the core rejects null).
    core->CloseStream(camera2Stream);
    camera2Stream = nullptr;
    core->CloseStream(playerStream);
    playerStream = nullptr;
    core->Finalize();
  }
  // Deviation: the alias would dangle after the closes above.
  inputStream = nullptr;
  return weftcore::Status();
}
