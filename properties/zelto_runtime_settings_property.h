// "zelto_stream", the device's settings stream, and its runtime settings
// record.
#pragma once

#include <cstdint>

#include "weftcore/serialize.h"

namespace Zelto {

constexpr char kStreamKey[] = "zelto_stream";
constexpr char kZeltoRuntimeSettingsKey[] = "kZeltoRuntimeSettingsKey";

// Values are defined by the producing stream; only the width is fixed.
enum class RunMode : uint8_t {};

struct ZeltoRuntimeSettingsProperty_ {
  RunMode runMode{};
  bool isRemoteServer = false;
  bool isUsingArFoundation = false;
  MSGPACK_DEFINE_MAP(runMode, isRemoteServer, isUsingArFoundation);
};

}  // namespace Zelto

MSGPACK_ADD_ENUM(Zelto::RunMode);
