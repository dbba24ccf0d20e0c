// The host side of one "mesh" stream: HostCore over the mesh component and
// the simulator, and the stream opened through it. Whichever way a command
// ends, the stream is wound down in the order the component expects: Stop if
// started, then CloseStream, then Finalize.
#pragma once

#include <memory>

#include "weftcore/host/host_core.h"
#include "weftcore/status.h"
#include "weftcore/stream.h"
#include "zelto_sim/host_configuration.h"

namespace zelto_cli {

class MeshSession {
 public:
  explicit MeshSession(const ZeltoSim::HostOptions& options);
  ~MeshSession();
  MeshSession(const MeshSession&) = delete;
  MeshSession& operator=(const MeshSession&) = delete;

  // Initialize, then OpenStream("mesh"): the factory creates the source and
  // the host calls RegisterMandatoryProperties and Open.
  weftcore::Status Open();
  weftcore::Status Start();
  weftcore::Status Stop();

  weftcore::Stream* stream() const { return stream_; }

 private:
  weftcore::host::HostCore core_;
  bool initialized_ = false;
  weftcore::Stream* stream_ = nullptr;
  bool started_ = false;
};

}  // namespace zelto_cli
