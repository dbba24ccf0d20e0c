// How a weftcore::Status reads on the command line.
#pragma once

#include <string>

#include "weftcore/status.h"

namespace zelto_cli {

// "MESSAGE (cause N, block B)".
std::string DescribeStatus(const weftcore::Status& status);

// "error: ACTION: MESSAGE (cause N, block B)", e.g. ACTION "set KEY".
std::string ErrorLine(const std::string& action, const weftcore::Status& status);

}  // namespace zelto_cli
