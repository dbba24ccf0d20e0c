// The statuses that the sim's property handlers answer with.
#pragma once

#include <string>

#include "sim_error.h"

namespace ZeltoSim {

inline weftcore::Status NullRecordError() {
  return SimError(weftcore::kCauseInvalidArgument, "Null pointer");
}

inline weftcore::Status NotSettableError(const std::string& key) {
  return SimError(weftcore::kCauseNotAvailable, "not available to set " + key);
}

}  // namespace ZeltoSim
