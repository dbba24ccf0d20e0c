#include "component/device_log.h"

#include <syslog.h>

#include "weftcore/osal.h"
#include "zelto_sim/recording.h"

namespace ZeltoSim {
namespace {

constexpr int kErrorLogType = 16;  // the platform log's "error"

}  // namespace

void LogDeviceError(const std::string& message) {
  if (weftcore::osal::DeliverToLogSink(kErrorLogType, kStatusBlock, message.c_str())) return;
  syslog(LOG_ERR, "[%s] %s", kStatusBlock, message.c_str());
}

}  // namespace ZeltoSim
