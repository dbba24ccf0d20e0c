// The log level record: clients set the mesh source's log level with it, and
// the source reads its starting level from "zelto_stream".
#pragma once

#include "logging/zelto_logger.h"
#include "weftcore/serialize.h"

MSGPACK_ADD_ENUM(ZeltoLogger::LogLevel);

namespace Zelto {

constexpr char kZeltoLogLevelKey[] = "kZeltoLogLevelKey";

struct ZeltoLogLevelProperty_ {
  ZeltoLogger::LogLevel logLevel = static_cast<ZeltoLogger::LogLevel>(0);
  MSGPACK_DEFINE_MAP(logLevel);
};

}  // namespace Zelto
