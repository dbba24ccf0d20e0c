// Properties of an open stream, by key, through their serialized path: the
// CLI sends and reads MessagePack bytes and knows no record type.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "json_msgpack.h"
#include "weftcore/status.h"
#include "weftcore/stream.h"

namespace zelto_cli {

// Stream::SetSerializedProperty with the MessagePack form of `value`.
weftcore::Status SetPropertyJson(weftcore::Stream* stream, const std::string& key,
                                 const Json& value);

// Stream::GetSerializedProperty with no input; copies the reply and hands
// it back with ReleaseSerializedProperty.
weftcore::Status GetPropertyBytes(weftcore::Stream* stream, const std::string& key,
                                  std::vector<uint8_t>* bytes);

// GetPropertyBytes decoded to JSON. A reply that does not decode is a
// cause 8 status naming the key.
weftcore::Status GetPropertyJson(weftcore::Stream* stream, const std::string& key, Json* value);

// "82a36e756d..." lowercase, no separators.
std::string HexText(const std::vector<uint8_t>& bytes);

}  // namespace zelto_cli
