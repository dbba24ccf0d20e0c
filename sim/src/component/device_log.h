// The device's own error lines, in the platform log: through the host's log
// sink when one is installed (the command-line host shows or captures it),
// else the system log, tagged "ZeltoSim".
#pragma once

#include <string>

namespace ZeltoSim {

void LogDeviceError(const std::string& message);

}  // namespace ZeltoSim
