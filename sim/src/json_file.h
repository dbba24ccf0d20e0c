// Small JSON readers whose errors name the file and the field.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>

#include "weftcore/status.h"

namespace ZeltoSim {

// "<path>: cannot open", "<path>: invalid JSON: <parser text>",
// "<path>: expected a JSON object".
weftcore::Status ReadJsonObject(const std::string& path, nlohmann::json* object);

// Where a field lives, for messages: `path` of the file and the dotted
// `prefix` of the enclosing object ("" at top level, "c." inside "c").
struct JsonPlace {
  std::string path;
  std::string prefix;
};

// Each reads object[key]; an absent key leaves *value unchanged and, when
// `required`, fails with "<path>: \"<prefix><key>\" is missing". A present key
// of the wrong kind fails with "<path>: \"<prefix><key>\" must be <kind>".
weftcore::Status ReadJsonNumber(const nlohmann::json& object, const JsonPlace& place,
                                const std::string& key, bool required, double* value);
weftcore::Status ReadJsonFloat(const nlohmann::json& object, const JsonPlace& place,
                               const std::string& key, bool required, float* value);
weftcore::Status ReadJsonInt32(const nlohmann::json& object, const JsonPlace& place,
                               const std::string& key, bool required, int32_t* value);
weftcore::Status ReadJsonBool(const nlohmann::json& object, const JsonPlace& place,
                              const std::string& key, bool required, bool* value);
weftcore::Status ReadJsonString(const nlohmann::json& object, const JsonPlace& place,
                                const std::string& key, bool required, std::string* value);

// Fails with "<path>: unknown key \"<prefix><key>\"" for the first key of
// `object` not in `known` (a typo would otherwise be silently ignored).
weftcore::Status RejectUnknownKeys(const nlohmann::json& object, const JsonPlace& place,
                                   std::initializer_list<const char*> known);

}  // namespace ZeltoSim
