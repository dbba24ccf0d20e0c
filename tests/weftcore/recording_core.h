// A host core serving the recording component, for the host suites.
#pragma once

#include <memory>

#include "weftcore/host/host_core.h"

namespace weftcore_test {

// A core with no search path whose stream "recording" is served by the
// in-process recording component; null if registration failed.
std::unique_ptr<weftcore::host::HostCore> MakeRecordingCore();

}  // namespace weftcore_test
