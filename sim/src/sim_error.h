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

inline weftcore::Status Invalid(const std::string& message) {
  return SimError(weftcore::kCauseInvalidArgument, message);
}

// "640 x 480", for messages about image sizes.
inline std::string SizeText(uint32_t width, uint32_t height) {
  return std::to_string(width) + " x " + std::to_string(height);
}

}  // namespace ZeltoSim
