// The parsers of the option values that are more than a number.
#include "run_options.h"

#include <charconv>
#include <cmath>
#include <utility>

namespace zelto_cli {
namespace {

bool ParseUint32(const std::string& text, uint32_t* value) {
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, *value);
  return result.ec == std::errc() && result.ptr == end && !text.empty();
}

}  // namespace

bool ParseMaskOption(const std::string& text, MaskOption* mask, std::string* error) {
  MaskOption parsed;
  const size_t colon = text.find(':');
  parsed.name = text.substr(0, colon);
  if (parsed.name.empty()) {
    *error = "'" + text + "' has no mask name (NAME[:color|:depth][:invert])";
    return false;
  }
  bool source_given = false;
  size_t start = colon;
  while (start != std::string::npos) {
    const size_t next = text.find(':', start + 1);
    const std::string word = text.substr(start + 1, next == std::string::npos ? next : next - start - 1);
    if ((word == "color" || word == "depth") && !source_given) {
      parsed.isColorSource = word == "color";
      source_given = true;
    } else if (word == "invert" && !parsed.isInvertMask) {
      parsed.isInvertMask = true;
    } else {
      *error = "'" + text + "': unexpected '" + word + "' (NAME[:color|:depth][:invert])";
      return false;
    }
    start = next;
  }
  *mask = std::move(parsed);
  return true;
}

bool ParseFrameRate(const std::string& text, FrameRate* rate, std::string* error) {
  FrameRate parsed;
  const size_t slash = text.find('/');
  const bool numbers = ParseUint32(text.substr(0, slash), &parsed.num) &&
                       (slash == std::string::npos || ParseUint32(text.substr(slash + 1), &parsed.denom));
  if (!numbers || parsed.denom == 0) {
    *error = "'" + text + "' is not NUM[/DEN] with unsigned 32-bit numbers and DEN > 0";
    return false;
  }
  *rate = parsed;
  return true;
}

bool ParseLogLevel(const std::string& text, int* level, std::string* error) {
  static const std::pair<const char*, int> kNames[] = {
      {"verbose", 2}, {"debug", 3}, {"info", 4}, {"warn", 5}, {"error", 6}, {"silent", 8}};
  for (const auto& [name, value] : kNames) {
    if (text == name) {
      *level = value;
      return true;
    }
  }
  uint32_t number = 0;
  if (ParseUint32(text, &number) && number >= 2 && number <= 8) {
    *level = static_cast<int>(number);
    return true;
  }
  *error = "'" + text + "' is not a log level (verbose, debug, info, warn, error, silent or 2..8)";
  return false;
}

bool ParsePropertySetting(const std::string& text, PropertySetting* setting, std::string* error) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0) {
    *error = "'" + text + "' is not KEY=JSON";
    return false;
  }
  PropertySetting parsed;
  parsed.key = text.substr(0, equals);
  try {
    parsed.value = Json::parse(text.substr(equals + 1));
  } catch (const Json::parse_error& parse_error) {
    // nlohmann's text starts with "[json.exception.parse_error.101] ".
    const std::string what = parse_error.what();
    const size_t bracket = what.find("] ");
    *error = "'" + text + "': invalid JSON: " +
             (bracket == std::string::npos ? what : what.substr(bracket + 2));
    return false;
  }
  if (!parsed.value.is_object()) {
    *error = "'" + text + "': the value must be a JSON object (a property is a map)";
    return false;
  }
  *setting = std::move(parsed);
  return true;
}

bool ParseEdgeJump(const std::string& text, std::optional<float>* jump, std::string* error) {
  if (text == "off") {
    jump->reset();
    return true;
  }
  float value = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end || !(value > 0) || !std::isfinite(value)) {
    *error = "'" + text + "' is neither a fraction of the depth above 0 (such as 0.05) nor off";
    return false;
  }
  *jump = value;
  return true;
}

bool ResolveRunOptions(RunOptions* options, std::string* error) {
  const bool flat = options->layout == MeshLayout::kFlat;
  if (options->playback && flat) {
    *error = "--playback delivers the reference layout: it cannot be combined with --layout flat";
    return false;
  }
  if (options->remote && options->layout == MeshLayout::kReference) {
    *error = "--remote always delivers the flat layout: it cannot be combined with "
             "--layout reference";
    return false;
  }
  if (options->playback && options->input.empty()) {
    *error = "--playback plays a recording: add --input DIR";
    return false;
  }
  if (options->playback && !options->player) {
    *error = "--playback plays \"player_tof_stream\", which --no-player leaves out";
    return false;
  }
  // The frame rate property holds one of the two: 15 plays, 30 is flat.
  if (options->playback) options->frame_rate = FrameRate{15, 1};
  if (flat) options->frame_rate = FrameRate{30, 1};
  const bool flat_bytes =
      options->remote || (options->frame_rate && options->frame_rate->num == 30);
  if (options->output.format == OutputFormat::kRaw && !flat_bytes) {
    *error = "--format raw writes the self-contained flat layout: add --layout flat (a "
             "reference-layout frame is a record of addresses inside this process)";
    return false;
  }
  return true;
}

}  // namespace zelto_cli
