// JSON <-> MessagePack for properties typed on the command line and printed
// back: the CLI knows no record types, only their serialized maps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <nlohmann/json.hpp>

namespace zelto_cli {

using Json = nlohmann::ordered_json;

// Packs `value` the way msgpack-c packs the records' fields: non-negative
// integers in the shortest unsigned form, negative ones in the shortest
// signed form, every number with a fraction or exponent as float 32 (the
// records hold no double), objects as maps in the order written.
std::vector<uint8_t> JsonToMsgpack(const Json& value);

// Decodes exactly one MessagePack object. Map keys that are not strings
// (the channel numbers of "channel_info_property") become their decimal
// text; float 32 values print with the shortest text that reads back as the
// same float. Throws std::runtime_error on malformed input, on a count
// larger than the bytes could hold and on nesting deeper than 1000 levels.
Json MsgpackToJson(const uint8_t* bytes, size_t size);

}  // namespace zelto_cli
