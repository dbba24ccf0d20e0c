// DescribeStatus and ErrorLine: a weftcore::Status as the user reads it.
#include "status_text.h"

namespace zelto_cli {

std::string DescribeStatus(const weftcore::Status& status) {
  return status.message() + " (cause " + std::to_string(static_cast<int>(status.cause())) +
         ", block " + status.block() + ")";
}

std::string ErrorLine(const std::string& action, const weftcore::Status& status) {
  return "error: " + action + ": " + DescribeStatus(status);
}

}  // namespace zelto_cli
