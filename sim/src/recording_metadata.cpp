#include "recording_metadata.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>

#include "json_file.h"
#include "sim_error.h"

namespace ZeltoSim {
namespace {

weftcore::Status NotPositive(const JsonPlace& place, const char* key, const char* kind) {
  return SimError(weftcore::kCauseInvalidArgument,
                  place.path + ": \"" + key + "\" must be a positive " + kind);
}

weftcore::Status ReadPositiveInt(const nlohmann::json& object, const JsonPlace& place,
                                 const char* key, int32_t* value) {
  weftcore::Status status = ReadJsonInt32(object, place, key, true, value);
  if (status.IsError()) return status;
  return *value > 0 ? weftcore::Status() : NotPositive(place, key, "integer");
}

weftcore::Status ReadPositiveNumber(const nlohmann::json& object, const JsonPlace& place,
                                    const char* key, bool required, double* value) {
  weftcore::Status status = ReadJsonNumber(object, place, key, required, value);
  if (status.IsError()) return status;
  return *value > 0 && std::isfinite(*value) ? weftcore::Status()
                                             : NotPositive(place, key, "number");
}

// A nested object `key` of a calibration file; absent is fine.
weftcore::Status FindObject(const nlohmann::json& object, const JsonPlace& place,
                            const char* key, const nlohmann::json** found) {
  *found = nullptr;
  const auto it = object.find(key);
  if (it == object.end()) return weftcore::Status();
  if (!it->is_object()) {
    return SimError(weftcore::kCauseInvalidArgument,
                    place.path + ": \"" + place.prefix + key + "\" must be an object");
  }
  *found = &*it;
  return weftcore::Status();
}

// Reads the float fields `names` of nested object `key` into `fields`.
template <size_t N>
weftcore::Status ReadFloatGroup(const nlohmann::json& object, const JsonPlace& place,
                                const char* key, const char* const (&names)[N],
                                float* const (&fields)[N]) {
  const nlohmann::json* group = nullptr;
  weftcore::Status status = FindObject(object, place, key, &group);
  if (status.IsError() || group == nullptr) return status;
  const JsonPlace inner{place.path, place.prefix + key + "."};
  for (size_t i = 0; i < N && status.ok(); ++i) {
    status = ReadJsonFloat(*group, inner, names[i], false, fields[i]);
  }
  for (const auto& item : group->items()) {
    bool known = false;
    for (const char* name : names) known = known || item.key() == name;
    if (!known && status.ok()) {
      status = SimError(weftcore::kCauseInvalidArgument,
                        place.path + ": unknown key \"" + inner.prefix + item.key() + "\"");
    }
  }
  return status;
}

weftcore::Status ReadInternal(const nlohmann::json& object, const JsonPlace& place,
                              const char* key, ZeltoTof::InternalParameter_* p) {
  return ReadFloatGroup(object, place, key, {"fx", "fy", "cx", "cy"},
                        {&p->fx, &p->fy, &p->cx, &p->cy});
}

}  // namespace

weftcore::Status ParseIntrinsicsFile(const std::string& path, Intrinsics* intrinsics) {
  nlohmann::json object;
  weftcore::Status status = ReadJsonObject(path, &object);
  const JsonPlace place{path, ""};
  if (status.ok()) status = ReadPositiveInt(object, place, "width", &intrinsics->width);
  if (status.ok()) status = ReadPositiveInt(object, place, "height", &intrinsics->height);
  if (status.ok()) status = ReadPositiveNumber(object, place, "fx", true, &intrinsics->fx);
  if (status.ok()) status = ReadPositiveNumber(object, place, "fy", true, &intrinsics->fy);
  if (status.ok()) status = ReadJsonNumber(object, place, "cx", true, &intrinsics->cx);
  if (status.ok()) status = ReadJsonNumber(object, place, "cy", true, &intrinsics->cy);
  if (status.ok()) {
    status = ReadPositiveNumber(object, place, "depth_scale", false, &intrinsics->depthScale);
  }
  return status;
}

ZeltoTof::ZeltoTofCalibrationSettingsProperty_ IdentityCalibration(const Intrinsics& intrinsics) {
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ calibration;
  calibration.colorWidth = intrinsics.width;
  calibration.colorHeight = intrinsics.height;
  calibration.depthWidth = intrinsics.width;
  calibration.depthHeight = intrinsics.height;
  calibration.isCalibrated = false;
  calibration.d.fx = static_cast<float>(intrinsics.fx);
  calibration.d.fy = static_cast<float>(intrinsics.fy);
  calibration.d.cx = static_cast<float>(intrinsics.cx);
  calibration.d.cy = static_cast<float>(intrinsics.cy);
  calibration.c = calibration.d;
  calibration.R.a = calibration.R.e = calibration.R.i = 1.0f;
  return calibration;
}

weftcore::Status ParseCalibrationFile(const std::string& path,
                                      ZeltoTof::ZeltoTofCalibrationSettingsProperty_* calibration) {
  nlohmann::json object;
  weftcore::Status status = ReadJsonObject(path, &object);
  const JsonPlace place{path, ""};
  if (status.ok()) {
    status = RejectUnknownKeys(object, place,
                               {"colorWidth", "colorHeight", "depthWidth", "depthHeight",
                                "isCalibrated", "c", "d", "R", "T"});
  }
  auto* cal = calibration;
  if (status.ok()) status = ReadJsonInt32(object, place, "colorWidth", false, &cal->colorWidth);
  if (status.ok()) status = ReadJsonInt32(object, place, "colorHeight", false, &cal->colorHeight);
  if (status.ok()) status = ReadJsonInt32(object, place, "depthWidth", false, &cal->depthWidth);
  if (status.ok()) status = ReadJsonInt32(object, place, "depthHeight", false, &cal->depthHeight);
  if (status.ok()) status = ReadJsonBool(object, place, "isCalibrated", false, &cal->isCalibrated);
  if (status.ok()) status = ReadInternal(object, place, "c", &cal->c);
  if (status.ok()) status = ReadInternal(object, place, "d", &cal->d);
  if (status.ok()) {
    ZeltoTof::Matrix_& m = cal->R;
    status = ReadFloatGroup(object, place, "R", {"a", "b", "c", "d", "e", "f", "g", "h", "i"},
                            {&m.a, &m.b, &m.c, &m.d, &m.e, &m.f, &m.g, &m.h, &m.i});
  }
  if (status.ok()) {
    status = ReadFloatGroup(object, place, "T", {"x", "y", "z"},
                            {&cal->T.x, &cal->T.y, &cal->T.z});
  }
  return status;
}

weftcore::Status ParseTimestampsFile(const std::string& path, size_t frameCount,
                                     std::vector<uint64_t>* timestamps) {
  std::ifstream file(path);
  if (!file) {
    return SimError(weftcore::kCauseNotFound, path + ": cannot open: " + std::strerror(errno));
  }
  timestamps->clear();
  std::string line;
  for (size_t number = 1; std::getline(file, line); ++number) {
    const size_t first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos) continue;
    const size_t last = line.find_last_not_of(" \t\r");
    const std::string text = line.substr(first, last - first + 1);
    errno = 0;
    char* end = nullptr;
    const unsigned long long value = std::strtoull(text.c_str(), &end, 10);
    if (text[0] == '-' || *end != '\0' || errno == ERANGE) {
      return SimError(weftcore::kCauseInvalidArgument,
                      path + ": line " + std::to_string(number) + ": \"" + text +
                          "\" is not a nanosecond count");
    }
    timestamps->push_back(value);
  }
  if (timestamps->size() != frameCount) {
    return SimError(weftcore::kCauseInvalidArgument,
                    path + ": " + std::to_string(timestamps->size()) + " timestamps for " +
                        std::to_string(frameCount) + " frames");
  }
  return weftcore::Status();
}

}  // namespace ZeltoSim
