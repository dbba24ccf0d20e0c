// The sim's error statuses: level 1, block "ZeltoSim", one line of text.
#pragma once

#include <string>

#include "weftcore/status.h"
#include "zelto_sim/recording.h"

namespace ZeltoSim {

inline weftcore::Status SimError(weftcore::Cause cause, const std::string& message) {
  weftcore::Status status(weftcore::kLevelError, cause, "%s", message.c_str());
  status.SetBlock(kStatusBlock);
  return status;
}

}  // namespace ZeltoSim
