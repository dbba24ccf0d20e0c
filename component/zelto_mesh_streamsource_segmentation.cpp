// TEMPORARY link stubs: replaced by the segmentation-link work (Parts 3.3, 3.4).
#include "component/zelto_mesh_streamsource.h"

void ZeltoMeshStreamSource::StartSegmentationStream() {}
void ZeltoMeshStreamSource::StopSegmentationStream() {}
void ZeltoMeshStreamSource::ControlSegmentationStream() {}
void ZeltoMeshStreamSource::ApplySegmentationMasks(weftcore::Channel::RawData*) {}

weftcore::Status ZeltoMeshStreamSource::Get(const std::string&,
                                            ZeltoMesh::ZeltoMeshMaskSettingsProperty_*) {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseNotImplemented, "not implemented");
}
weftcore::Status ZeltoMeshStreamSource::Set(const std::string&,
                                            const ZeltoMesh::ZeltoMeshMaskSettingsProperty_*) {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseNotImplemented, "not implemented");
}
