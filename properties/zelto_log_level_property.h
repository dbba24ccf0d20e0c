// The log level record (Part 4.2), served by the mesh source and read from
// "zelto_stream" (Part 1.3).
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
