// Property access through the serialized path, as any client of the host
// would do it.
#include "property_client.h"

#include <stdexcept>

#include "weftcore/stream_function_lock.h"

namespace zelto_cli {

weftcore::Status SetPropertyJson(weftcore::Stream* stream, const std::string& key,
                                 const Json& value) {
  const std::vector<uint8_t> bytes = JsonToMsgpack(value);
  return stream->SetSerializedProperty(key, bytes.data(), bytes.size());
}

weftcore::Status GetPropertyBytes(weftcore::Stream* stream, const std::string& key,
                                  std::vector<uint8_t>* bytes) {
  // Held across the read and its release, as Stream::GetProperty does, so
  // that no other property call of the stream comes in between.
  weftcore::StreamFunctionLock lock(stream->GetFunctionLockManager(),
                                    weftcore::StreamFunctionType::kProperty);
  if (lock.GetStatus().IsError()) return lock.GetStatus();
  void* reply = nullptr;
  size_t size = 0;
  weftcore::Status status = stream->GetSerializedProperty(key, nullptr, 0, &reply, &size);
  if (status.ok() && reply != nullptr) {
    const auto* first = static_cast<const uint8_t*>(reply);
    bytes->assign(first, first + size);
  }
  if (reply != nullptr) {
    weftcore::Status released = stream->ReleaseSerializedProperty(key, reply, size);
    if (status.ok()) status = released;
  }
  return status;
}

weftcore::Status GetPropertyJson(weftcore::Stream* stream, const std::string& key, Json* value) {
  std::vector<uint8_t> bytes;
  weftcore::Status status = GetPropertyBytes(stream, key, &bytes);
  if (status.IsError()) return status;
  try {
    *value = MsgpackToJson(bytes.data(), bytes.size());
  } catch (const std::exception& error) {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseSerializer, "%s: %s",
                            key.c_str(), error.what())
        .SetBlock("zelto-mesh");
  }
  return status;
}

std::string HexText(const std::vector<uint8_t>& bytes) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * bytes.size());
  for (uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

}  // namespace zelto_cli
