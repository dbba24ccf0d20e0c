#include "recording_metadata.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <cstdlib>
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

weftcore::Status Invalid(const JsonPlace& place, const std::string& what) {
  return SimError(weftcore::kCauseInvalidArgument, place.path + ": " + what);
}

weftcore::Status ReadFiniteNumber(const nlohmann::json& object, const JsonPlace& place,
                                  const char* key, bool required, double* value) {
  weftcore::Status status = ReadJsonNumber(object, place, key, required, value);
  if (status.IsError() || std::isfinite(*value)) return status;
  return Invalid(place, "\"" + std::string(key) + "\" must be a finite number");
}

// A pinhole camera stored as the matrix K = [fx 0 cx; 0 fy cy; 0 0 1] listed
// column by column. A row-major listing puts cx where a zero belongs and is
// refused rather than read as a camera with a wild principal point.
weftcore::Status ReadIntrinsicMatrix(const nlohmann::json& value, const JsonPlace& place,
                                     Intrinsics* intrinsics) {
  double m[9] = {};
  bool numbers = value.is_array() && value.size() == 9;
  for (size_t i = 0; numbers && i < 9; ++i) {
    numbers = value[i].is_number() && std::isfinite(value[i].get<double>());
    if (numbers) m[i] = value[i].get<double>();
  }
  if (!numbers) return Invalid(place, "\"intrinsic_matrix\" must be an array of 9 numbers");
  if (m[1] != 0 || m[2] != 0 || m[3] != 0 || m[5] != 0 || m[8] != 1) {
    return Invalid(place,
                   "\"intrinsic_matrix\" must be column-major [fx, 0, 0, 0, fy, 0, cx, cy, 1]");
  }
  if (!(m[0] > 0) || !(m[4] > 0)) {
    return Invalid(place, "\"intrinsic_matrix\" must have positive focal lengths (items 1, 5)");
  }
  intrinsics->fx = m[0];
  intrinsics->fy = m[4];
  intrinsics->cx = m[6];
  intrinsics->cy = m[7];
  return weftcore::Status();
}

bool IsDistortionKey(const std::string& key) {
  for (const char* name : {"distortion", "distortion_coefficients", "distortion_coeffs",
                           "dist_coeffs", "D", "k1", "k2", "k3", "k4", "p1", "p2"}) {
    if (key == name) return true;
  }
  return false;
}

bool AllZero(const nlohmann::json& value) {
  if (value.is_number()) return value.get<double>() == 0;
  if (!value.is_array()) return false;
  for (const nlohmann::json& item : value) {
    if (!AllZero(item)) return false;
  }
  return true;
}

// Depth pixels are back-projected through the plain pinhole model, so a lens
// model that bends them would shift every point: refused unless it is zero.
weftcore::Status CheckExtraKeys(const nlohmann::json& object, const JsonPlace& place,
                                std::vector<std::string>* warnings) {
  static constexpr const char* kKnown[] = {"width", "height", "fx", "fy", "cx", "cy",
                                           "intrinsic_matrix", "depth_scale", "near", "far"};
  for (const auto& item : object.items()) {
    bool known = false;
    for (const char* name : kKnown) known = known || item.key() == name;
    if (known) continue;
    if (!IsDistortionKey(item.key())) {
      warnings->push_back(place.path + ": unknown key \"" + item.key() + "\" ignored");
    } else if (!AllZero(item.value())) {
      return Invalid(place, "\"" + item.key() +
                                "\": lens distortion is not supported; undistort the depth "
                                "images first, or set the coefficients to 0");
    }
  }
  return weftcore::Status();
}

weftcore::Status ReadClipping(const nlohmann::json& object, const JsonPlace& place,
                              Intrinsics* intrinsics) {
  weftcore::Status status = ReadFiniteNumber(object, place, "near", false, &intrinsics->near);
  if (status.ok()) status = ReadFiniteNumber(object, place, "far", false, &intrinsics->far);
  if (status.IsError()) return status;
  if (intrinsics->near < 0 || intrinsics->far < 0) {
    return Invalid(place, "\"near\" and \"far\" must not be negative");
  }
  if (intrinsics->far > 0 && intrinsics->near >= intrinsics->far) {
    return Invalid(place, "\"near\" must be less than \"far\"");
  }
  return weftcore::Status();
}

}  // namespace

weftcore::Status ParseIntrinsicsFile(const std::string& path, Intrinsics* intrinsics,
                                     std::vector<std::string>* warnings) {
  nlohmann::json object;
  weftcore::Status status = ReadJsonObject(path, &object);
  const JsonPlace place{path, ""};
  if (status.ok()) status = ReadPositiveInt(object, place, "width", &intrinsics->width);
  if (status.ok()) status = ReadPositiveInt(object, place, "height", &intrinsics->height);
  const auto matrix = object.find("intrinsic_matrix");
  if (status.ok() && matrix != object.end()) {
    for (const char* key : {"fx", "fy", "cx", "cy"}) {
      if (status.ok() && object.contains(key)) {
        status = Invalid(place, "\"" + std::string(key) +
                                    "\" and \"intrinsic_matrix\" both given; keep one");
      }
    }
    if (status.ok()) status = ReadIntrinsicMatrix(*matrix, place, intrinsics);
  } else {
    if (status.ok()) status = ReadPositiveNumber(object, place, "fx", true, &intrinsics->fx);
    if (status.ok()) status = ReadPositiveNumber(object, place, "fy", true, &intrinsics->fy);
    if (status.ok()) status = ReadFiniteNumber(object, place, "cx", true, &intrinsics->cx);
    if (status.ok()) status = ReadFiniteNumber(object, place, "cy", true, &intrinsics->cy);
  }
  if (status.ok()) {
    status = ReadPositiveNumber(object, place, "depth_scale", false, &intrinsics->depthScale);
  }
  if (status.ok()) status = ReadClipping(object, place, intrinsics);
  if (status.ok()) status = CheckExtraKeys(object, place, warnings);
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

bool ParseTimestamp(const std::string& text, bool seconds, uint64_t* nanoseconds) {
  const size_t point = seconds ? text.find('.') : std::string::npos;
  const std::string whole = text.substr(0, point);
  std::string fraction = point == std::string::npos ? "" : text.substr(point + 1);
  const auto digits = [](const std::string& part) {
    return part.find_first_not_of("0123456789") == std::string::npos;
  };
  if (whole.empty() || !digits(whole) || !digits(fraction)) return false;
  const bool round_up = fraction.size() > 9 && fraction[9] >= '5';
  fraction.resize(9, '0');
  errno = 0;
  const unsigned long long units = std::strtoull(whole.c_str(), nullptr, 10);
  const uint64_t scale = seconds ? 1000000000u : 1u;
  const uint64_t part = seconds ? std::strtoull(fraction.c_str(), nullptr, 10) + round_up : 0;
  if (errno == ERANGE || units > (UINT64_MAX - part) / scale) return false;
  *nanoseconds = units * scale + part;
  return true;
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
    uint64_t value = 0;
    if (!ParseTimestamp(text, text.find('.') != std::string::npos, &value)) {
      return SimError(weftcore::kCauseInvalidArgument,
                      path + ": line " + std::to_string(number) + ": \"" + text +
                          "\" is not a nanosecond count or seconds with a decimal point");
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
