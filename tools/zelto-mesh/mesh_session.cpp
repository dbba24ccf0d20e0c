// MeshSession: Open, Start and Stop, and the wind-down on destruction.
#include "mesh_session.h"

namespace zelto_cli {

MeshSession::MeshSession(const ZeltoSim::HostOptions& options)
    : core_(ZeltoSim::BuildHostConfiguration(options)) {}

MeshSession::~MeshSession() {
  // Statuses here have no one left to report to: the run already failed or
  // already reported its result.
  if (started_) Stop();
  if (stream_ != nullptr) core_.CloseStream(stream_);
  if (initialized_) core_.Finalize();
}

weftcore::Status MeshSession::Open() {
  weftcore::Status status = core_.Initialize();
  if (status.IsError()) return status;
  initialized_ = true;
  return core_.OpenStream(ZeltoSim::kMeshStreamKey, &stream_);
}

weftcore::Status MeshSession::Start() {
  weftcore::Status status = stream_->Start();
  started_ = status.ok();
  return status;
}

weftcore::Status MeshSession::Stop() {
  started_ = false;
  return stream_->Stop();
}

}  // namespace zelto_cli
