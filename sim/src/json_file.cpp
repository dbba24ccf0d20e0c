#include "json_file.h"

#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <sstream>

#include "sim_error.h"

namespace ZeltoSim {
namespace {

std::string FieldName(const JsonPlace& place, const std::string& key) {
  return "\"" + place.prefix + key + "\"";
}

weftcore::Status WrongKind(const JsonPlace& place, const std::string& key, const char* kind) {
  return SimError(weftcore::kCauseInvalidArgument,
                  place.path + ": " + FieldName(place, key) + " must be " + kind);
}

// Finds object[key]: null when absent (an error when required).
weftcore::Status Find(const nlohmann::json& object, const JsonPlace& place, const std::string& key,
                      bool required, const nlohmann::json** found) {
  *found = nullptr;
  const auto it = object.find(key);
  if (it != object.end()) {
    *found = &*it;
  } else if (required) {
    return SimError(weftcore::kCauseInvalidArgument,
                    place.path + ": " + FieldName(place, key) + " is missing");
  }
  return weftcore::Status();
}

}  // namespace

weftcore::Status ReadJsonObject(const std::string& path, nlohmann::json* object) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    return SimError(weftcore::kCauseNotFound, path + ": cannot open: " + std::strerror(errno));
  }
  std::stringstream text;
  text << file.rdbuf();
  try {
    *object = nlohmann::json::parse(text.str());
  } catch (const nlohmann::json::exception& error) {
    return SimError(weftcore::kCauseInvalidArgument, path + ": invalid JSON: " + error.what());
  }
  if (!object->is_object()) {
    return SimError(weftcore::kCauseInvalidArgument, path + ": expected a JSON object");
  }
  return weftcore::Status();
}

weftcore::Status ReadJsonNumber(const nlohmann::json& object, const JsonPlace& place,
                                const std::string& key, bool required, double* value) {
  const nlohmann::json* found = nullptr;
  weftcore::Status status = Find(object, place, key, required, &found);
  if (status.IsError() || found == nullptr) return status;
  if (!found->is_number()) return WrongKind(place, key, "a number");
  *value = found->get<double>();
  return weftcore::Status();
}

weftcore::Status ReadJsonFloat(const nlohmann::json& object, const JsonPlace& place,
                               const std::string& key, bool required, float* value) {
  double number = *value;
  weftcore::Status status = ReadJsonNumber(object, place, key, required, &number);
  if (status.IsError()) return status;
  if (std::fabs(number) > std::numeric_limits<float>::max()) {
    return WrongKind(place, key, "a 32-bit float");
  }
  *value = static_cast<float>(number);
  return weftcore::Status();
}

weftcore::Status ReadJsonInt32(const nlohmann::json& object, const JsonPlace& place,
                               const std::string& key, bool required, int32_t* value) {
  const nlohmann::json* found = nullptr;
  weftcore::Status status = Find(object, place, key, required, &found);
  if (status.IsError() || found == nullptr) return status;
  if (!found->is_number_integer()) return WrongKind(place, key, "a 32-bit integer");
  if (found->is_number_unsigned()) {
    const uint64_t number = found->get<uint64_t>();
    if (number > static_cast<uint64_t>(std::numeric_limits<int32_t>::max())) {
      return WrongKind(place, key, "a 32-bit integer");
    }
    *value = static_cast<int32_t>(number);
    return weftcore::Status();
  }
  const int64_t number = found->get<int64_t>();
  if (number < std::numeric_limits<int32_t>::min() ||
      number > std::numeric_limits<int32_t>::max()) {
    return WrongKind(place, key, "a 32-bit integer");
  }
  *value = static_cast<int32_t>(number);
  return weftcore::Status();
}

weftcore::Status ReadJsonBool(const nlohmann::json& object, const JsonPlace& place,
                              const std::string& key, bool required, bool* value) {
  const nlohmann::json* found = nullptr;
  weftcore::Status status = Find(object, place, key, required, &found);
  if (status.IsError() || found == nullptr) return status;
  if (!found->is_boolean()) return WrongKind(place, key, "true or false");
  *value = found->get<bool>();
  return weftcore::Status();
}

weftcore::Status ReadJsonString(const nlohmann::json& object, const JsonPlace& place,
                                const std::string& key, bool required, std::string* value) {
  const nlohmann::json* found = nullptr;
  weftcore::Status status = Find(object, place, key, required, &found);
  if (status.IsError() || found == nullptr) return status;
  if (!found->is_string()) return WrongKind(place, key, "a string");
  *value = found->get<std::string>();
  return weftcore::Status();
}

weftcore::Status RejectUnknownKeys(const nlohmann::json& object, const JsonPlace& place,
                                   std::initializer_list<const char*> known) {
  for (const auto& item : object.items()) {
    bool isKnown = false;
    for (const char* name : known) isKnown = isKnown || item.key() == name;
    if (!isKnown) {
      return SimError(weftcore::kCauseInvalidArgument,
                      place.path + ": unknown key " + FieldName(place, item.key()));
    }
  }
  return weftcore::Status();
}

}  // namespace ZeltoSim
