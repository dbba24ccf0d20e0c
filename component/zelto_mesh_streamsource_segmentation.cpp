// The segmentation link of ZeltoMeshStreamSource: the frame thread opens the
// segmentation stream while masking is on, asks it for the current masks and
// blanks the masked points; the mask settings handlers switch it.
//
// Every access to `maskSettings` and `maskedPointCloud.maskThreshold` from a
// property handler, and the frame thread's reads of the enable flag, are made
// under `maskMutex`, so that a Set racing a frame is not a data race. The
// mutex is never held while the segmentation stream is opened, started,
// stopped or closed: those calls go into the host, which may call back.
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "component/stream_source_logger.h"
#include "component/zelto_mesh_constants.h"
#include "component/zelto_mesh_streamsource.h"

namespace {

using ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_;
using ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_;
using ZeltoSegmentation::ZeltoSegmentationMaskInfo_;

// The request list: one entry per mask info, in order, all mask data fields 0.
std::vector<ZeltoSegmentationMaskDataProperty_> RequestList(
    const std::vector<ZeltoSegmentationMaskInfo_>& maskInfo) {
  std::vector<ZeltoSegmentationMaskDataProperty_> requests;
  requests.reserve(maskInfo.size());
  for (const ZeltoSegmentationMaskInfo_& info : maskInfo) {
    ZeltoSegmentationMaskDataProperty_ request;
    request.name = info.name;
    request.isColorSource = info.isColorSource;
    request.isInvertMask = info.isInvertMask;
    requests.push_back(std::move(request));
  }
  return requests;
}

// Every failure of this file is logged at Debug as "<what> cause:%d message:%s".
void LogFailure(const char* format, const weftcore::Status& status) {
  StreamSourceLogger().WriteLog(ZeltoLogger::Debug, ZeltoMesh::kComponentName, format,
                                static_cast<int>(status.cause()), status.message().c_str());
}

// The enable flag, read under the mask mutex that the Set handler writes it under.
bool ReadEnabled(std::mutex& maskMutex, const bool& enabled) {
  std::lock_guard<std::mutex> lock(maskMutex);
  return enabled;
}

weftcore::Status NullRecord() {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument,
                          "property is null.")
      .SetBlock(ZeltoMesh::kComponentName);
}

}  // namespace

void ZeltoMeshStreamSource::StartSegmentationStream() {
  weftcore::Status status =
      core->OpenStream(ZeltoSegmentation::kSegmentationStreamKey, &segmentationStream);
  if (status.IsError()) {
    LogFailure("Zelto Segmentation Stream cannot open cause:%d message:%s", status);
    segmentationStream = nullptr;
    return;
  }
  status = segmentationStream->Start();
  if (status.IsError()) {
    LogFailure("Zelto Segmentation Stream cannot start cause:%d message:%s", status);
    core->CloseStream(segmentationStream);
    segmentationStream = nullptr;
    return;
  }
  std::lock_guard<std::mutex> lock(maskMutex);
  maskDataList.data = RequestList(maskSettings.maskInfo);
}

void ZeltoMeshStreamSource::StopSegmentationStream() {
  weftcore::Status status = segmentationStream->Stop();
  if (status.IsError()) {
    LogFailure("Zelto Segmentation Stream cannot stop cause:%d message:%s", status);
  }
  status = core->CloseStream(segmentationStream);
  if (status.IsError()) {
    LogFailure("Zelto Segmentation Stream cannot close cause:%d message:%s", status);
  }
  segmentationStream = nullptr;
}

void ZeltoMeshStreamSource::ControlSegmentationStream() {
  // Each reading takes the mutex only for the flag: the stream is opened,
  // started, stopped and closed without it. A failure is logged and tried
  // again on the next frame, since the segmentation service may come later.
  if (ReadEnabled(maskMutex, maskSettings.enabled)) {
    if (segmentationStream == nullptr) StartSegmentationStream();
    if (camera2Stream != nullptr) {
      maskedPointCloud.stream = camera2Stream;
      maskedPointCloud.SetupCoordinate();
    }
  }
  // Read again: a Set may have cleared the flag meanwhile.
  if (!ReadEnabled(maskMutex, maskSettings.enabled)) {
    if (segmentationStream != nullptr) StopSegmentationStream();
    if (camera2Stream != nullptr) maskedPointCloud.stream = nullptr;
  }
}

void ZeltoMeshStreamSource::ApplySegmentationMasks(weftcore::Channel::RawData* raw) {
  if (segmentationStream == nullptr) return;
  std::lock_guard<std::mutex> lock(maskMutex);
  if (!maskSettings.enabled) return;
  // The list goes out as the request and the reply replaces it.
  weftcore::Status status = segmentationStream->GetProperty(
      ZeltoSegmentation::kZeltoSegmentationMaskDataListKey, &maskDataList);
  if (status.IsError()) {
    LogFailure("Mask data cannot get cause:%d message:%s", status);
    return;
  }
  status = maskedPointCloud.Apply(raw, &maskDataList);
  if (status.IsError()) LogFailure("cause:%d message:%s", status);
}

weftcore::Status ZeltoMeshStreamSource::Get(const std::string& /*key*/,
                                            ZeltoMesh::ZeltoMeshMaskSettingsProperty_* property) {
  StreamSourceLogger().WriteLog(ZeltoLogger::Debug, ZeltoMesh::kComponentName,
                                "[%s] Get ZeltoMeshMaskSettingsProperty by key=%s prop=%p\n",
                                ZeltoMesh::kComponentName, ZeltoMesh::kZeltoMeshMaskSettingsKey,
                                static_cast<const void*>(property));
  if (property == nullptr) return NullRecord();
  std::lock_guard<std::mutex> lock(maskMutex);
  property->enabled = maskSettings.enabled;
  if (&property->maskInfo != &maskSettings.maskInfo) property->maskInfo = maskSettings.maskInfo;
  property->maskThreshold = maskedPointCloud.maskThreshold;
  return weftcore::Status();
}

weftcore::Status ZeltoMeshStreamSource::Set(
    const std::string& /*key*/, const ZeltoMesh::ZeltoMeshMaskSettingsProperty_* property) {
  StreamSourceLogger().WriteLog(ZeltoLogger::Debug, ZeltoMesh::kComponentName,
                                "[%s] Set ZeltoMeshMaskSettingsProperty by key=%s prop=%p\n",
                                ZeltoMesh::kComponentName, ZeltoMesh::kZeltoMeshMaskSettingsKey,
                                static_cast<const void*>(property));
  if (property == nullptr) return NullRecord();
  // The copies are made before anything is stored: when one cannot be
  // allocated, the Set fails with the settings and the requests as they were.
  std::vector<ZeltoSegmentationMaskInfo_> maskInfo = property->maskInfo;
  std::vector<ZeltoSegmentationMaskDataProperty_> requests;
  if (property->enabled) requests = RequestList(maskInfo);
  std::lock_guard<std::mutex> lock(maskMutex);
  maskSettings.enabled = property->enabled;
  maskSettings.maskInfo.swap(maskInfo);
  maskSettings.maskThreshold = property->maskThreshold;
  maskedPointCloud.maskThreshold = property->maskThreshold;
  if (maskSettings.enabled) maskDataList.data.swap(requests);
  return weftcore::Status();
}
