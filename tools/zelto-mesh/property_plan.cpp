// ApplyProperties: the options of a run turned into property sets, in order.
#include "property_plan.h"

#include "property_client.h"

namespace zelto_cli {
namespace {

constexpr char kLogLevelKey[] = "kZeltoLogLevelKey";
constexpr char kFrameRateKey[] = "frame_rate_property";
constexpr char kAlgorithmConfigKey[] = "kZeltoMeshAlgorithmConfigKey";
constexpr char kMaskSettingsKey[] = "kZeltoMeshMaskSettingsKey";

weftcore::Status Set(weftcore::Stream* stream, const std::string& key, const Json& value,
                     std::string* action) {
  *action = "set " + key;
  return SetPropertyJson(stream, key, value);
}

// Reads `key`, lets `edit` change the given fields, writes it back.
template <typename Edit>
weftcore::Status Update(weftcore::Stream* stream, const std::string& key, Edit edit,
                        std::string* action) {
  *action = "get " + key;
  Json value;
  weftcore::Status status = GetPropertyJson(stream, key, &value);
  if (status.IsError()) return status;
  edit(value);
  return Set(stream, key, value, action);
}

// Reads the record of `setting.key`, changes the fields `setting` names and
// writes it. A record that JSON cannot carry back unchanged (the integer map
// keys of "channel_info_property") is sent as given instead.
weftcore::Status Merge(weftcore::Stream* stream, const PropertySetting& setting,
                       std::string* action) {
  *action = "get " + setting.key;
  std::vector<uint8_t> bytes;
  weftcore::Status status = GetPropertyBytes(stream, setting.key, &bytes);
  if (status.IsError()) return status;
  Json value;
  try {
    value = MsgpackToJson(bytes.data(), bytes.size());
  } catch (const std::exception&) {
    return Set(stream, setting.key, setting.value, action);
  }
  if (!value.is_object() || JsonToMsgpack(value) != bytes) {
    return Set(stream, setting.key, setting.value, action);
  }
  for (const auto& [field, field_value] : setting.value.items()) value[field] = field_value;
  return Set(stream, setting.key, value, action);
}

bool RecordingMaskIsColor(const ZeltoSim::Recording* recording, const std::string& name) {
  if (recording != nullptr) {
    for (const ZeltoSim::MaskTrack& track : recording->masks) {
      if (track.name == name) return track.isColorSource;
    }
  }
  return true;
}

}  // namespace

Json MaskInfoJson(const std::vector<MaskOption>& masks, const ZeltoSim::Recording* recording) {
  Json list = Json::array();
  for (const MaskOption& mask : masks) {
    list.push_back(Json{
        {"name", mask.name},
        {"isColorSource", mask.isColorSource.value_or(RecordingMaskIsColor(recording, mask.name))},
        {"isInvertMask", mask.isInvertMask}});
  }
  return list;
}

weftcore::Status ApplyProperties(weftcore::Stream* stream, const RunOptions& options,
                                 const ZeltoSim::Recording* recording, std::string* action) {
  weftcore::Status status;
  if (options.log_level) {
    status = Set(stream, kLogLevelKey, Json{{"logLevel", *options.log_level}}, action);
    if (status.IsError()) return status;
  }
  if (options.frame_rate) {
    status = Set(stream, kFrameRateKey,
                 Json{{"num", options.frame_rate->num}, {"denom", options.frame_rate->denom}},
                 action);
    if (status.IsError()) return status;
  }
  if (options.reduction || options.reset_period) {
    status = Update(
        stream, kAlgorithmConfigKey,
        [&](Json& config) {
          if (options.reduction) config["meshReductionLevel"] = *options.reduction;
          if (options.reset_period) config["resetTrianglePeriod"] = *options.reset_period;
        },
        action);
    if (status.IsError()) return status;
  }
  if (!options.masks.empty() || options.mask_threshold) {
    status = Update(
        stream, kMaskSettingsKey,
        [&](Json& settings) {
          if (!options.masks.empty()) {
            settings["enabled"] = true;
            settings["maskInfo"] = MaskInfoJson(options.masks, recording);
          }
          if (options.mask_threshold) settings["maskThreshold"] = *options.mask_threshold;
        },
        action);
    if (status.IsError()) return status;
  }
  for (const PropertySetting& setting : options.settings) {
    status = Merge(stream, setting, action);
    if (status.IsError()) return status;
  }
  return status;
}

}  // namespace zelto_cli
