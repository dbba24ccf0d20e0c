#include "zelto_sim/sim_options.h"

#include <cerrno>
#include <cstdlib>
#include <limits>

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
    } else {
      return SimError(weftcore::kCauseInvalidArgument,
                      "unknown component argument \"" + key + "\"");
    }
  }
  return weftcore::Status();
}

}  // namespace ZeltoSim
