#include "zelto_sim/sim_options.h"

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <set>
#include <sstream>

#include "properties/zelto_log_level_property.h"
#include "properties/zelto_runtime_settings_property.h"
#include "properties/zelto_segmentation_properties.h"
#include "properties/zelto_tof_properties.h"
#include "sim_error.h"

namespace ZeltoSim {
namespace {

weftcore::Status BadValue(const std::string& key, const std::string& value, const char* kind) {
  return SimError(weftcore::kCauseInvalidArgument,
                  "component argument \"" + key + "\": \"" + value + "\" is not " + kind);
}

bool ParseUnsigned(const std::string& text, uint64_t max, uint64_t* value) {
  if (text.empty() || text[0] < '0' || text[0] > '9') return false;
  errno = 0;
  char* end = nullptr;
  const unsigned long long number = std::strtoull(text.c_str(), &end, 10);
  if (*end != '\0' || errno == ERANGE || number > max) return false;
  *value = number;
  return true;
}

bool ParseFlag(const std::string& text, bool* value) {
  if (text == "true" || text == "1") {
    *value = true;
  } else if (text == "false" || text == "0") {
    *value = false;
  } else {
    return false;
  }
  return true;
}

// The names a failure knob may list: the source types, or the keys of the
// properties that the sim's sources register themselves.
const std::set<std::string>& SourceTypes() {
  static const std::set<std::string> types{kSettingsSourceType, kTofCameraSourceType,
                                           kTofPlayerSourceType, kSegmentationSourceType};
  return types;
}

const std::set<std::string>& PropertyKeys() {
  static const std::set<std::string> keys{
      Zelto::kZeltoLogLevelKey,
      Zelto::kZeltoRuntimeSettingsKey,
      ZeltoTof::kZeltoTofCamera2CurrentConfigurationKey,
      ZeltoTof::kZeltoTofCalibrationSettingsKey,
      ZeltoTof::kZeltoTofProcessTargetsKey,
      ZeltoSegmentation::kZeltoSegmentationMaskDataListKey};
  return keys;
}

// Each list knob: its argument key, its field and whether it names source
// types (else property keys).
struct ListKnob {
  const char* key;
  std::set<std::string> SimFaults::*list;
  bool namesSourceTypes;
};

weftcore::Status ParseList(const ListKnob& knob, const std::string& value, SimFaults* faults) {
  std::set<std::string>& list = faults->*knob.list;
  list.clear();
  std::istringstream items(value);
  std::string item;
  while (std::getline(items, item, ',')) {
    if (knob.namesSourceTypes && SourceTypes().count(item) == 0) {
      return BadValue(knob.key, item, "a source type");
    }
    if (!knob.namesSourceTypes && PropertyKeys().count(item) == 0) {
      return BadValue(knob.key, item, "a property of the sim");
    }
    list.insert(item);
  }
  return weftcore::Status();
}

std::string JoinList(const std::set<std::string>& list) {
  std::string text;
  for (const std::string& item : list) text += (text.empty() ? "" : ",") + item;
  return text;
}

constexpr ListKnob kListKnobs[] = {
    {"fail_open", &SimFaults::failOpen, true},   {"fail_start", &SimFaults::failStart, true},
    {"fail_stop", &SimFaults::failStop, true},   {"fail_close", &SimFaults::failClose, true},
    {"fail_get", &SimFaults::failGet, false},    {"fail_set", &SimFaults::failSet, false},
    {"throw_get", &SimFaults::throwGet, false}};

const ListKnob* FindListKnob(const std::string& key) {
  for (const ListKnob& knob : kListKnobs) {
    if (key == knob.key) return &knob;
  }
  return nullptr;
}

}  // namespace

weftcore::ComponentArgument ToComponentArgument(const SimOptions& options) {
  weftcore::ComponentArgument args;
  args.values["input"] = options.input;
  args.values["frames"] = std::to_string(options.frames);
  args.values["seed"] = std::to_string(options.seed);
  args.values["remote"] = options.remote ? "true" : "false";
  args.values["run_mode"] = std::to_string(options.runMode);
  args.values["realtime"] = options.realtime ? "true" : "false";
  args.values["log_level"] = std::to_string(options.logLevel);
  for (const ListKnob& knob : kListKnobs) {
    const std::set<std::string>& list = options.faults.*knob.list;
    if (!list.empty()) args.values[knob.key] = JoinList(list);
  }
  if (options.faults.pointCloud != "full") args.values["point_cloud"] = options.faults.pointCloud;
  return args;
}

weftcore::Status ParseSimOptions(const weftcore::ComponentArgument& args, SimOptions* options) {
  const uint64_t kAny = std::numeric_limits<uint64_t>::max();
  for (const auto& [key, value] : args.values) {
    uint64_t number = 0;
    if (key == "input") {
      options->input = value;
    } else if (key == "frames") {
      if (!ParseUnsigned(value, kAny, &options->frames)) {
        return BadValue(key, value, "an unsigned integer");
      }
    } else if (key == "seed") {
      if (!ParseUnsigned(value, kAny, &options->seed)) {
        return BadValue(key, value, "an unsigned integer");
      }
    } else if (key == "run_mode") {
      if (!ParseUnsigned(value, 255, &number)) return BadValue(key, value, "an integer 0..255");
      options->runMode = static_cast<uint8_t>(number);
    } else if (key == "log_level") {
      if (!ParseUnsigned(value, 8, &number) || number < 2) {
        return BadValue(key, value, "an integer 2..8");
      }
      options->logLevel = static_cast<int32_t>(number);
    } else if (key == "remote") {
      if (!ParseFlag(value, &options->remote)) return BadValue(key, value, "true or false");
    } else if (key == "realtime") {
      if (!ParseFlag(value, &options->realtime)) return BadValue(key, value, "true or false");
    } else if (const ListKnob* knob = FindListKnob(key)) {
      const weftcore::Status status = ParseList(*knob, value, &options->faults);
      if (status.IsError()) return status;
    } else if (key == "point_cloud") {
      if (value != "full" && value != "null" && value != "short") {
        return BadValue(key, value, "full, null or short");
      }
      options->faults.pointCloud = value;
    } else {
      return SimError(weftcore::kCauseInvalidArgument,
                      "unknown component argument \"" + key + "\"");
    }
  }
  return weftcore::Status();
}

}  // namespace ZeltoSim
