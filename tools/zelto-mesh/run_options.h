// What `zelto-mesh run` was asked to do, after parsing and validation.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "frame_writer.h"
#include "json_msgpack.h"
#include "preview_renderer.h"

namespace zelto_cli {

// One --mask NAME[:color|:depth][:invert].
// Without :color or :depth the source follows the recording's mask track
// (masks/NAME/mask.json), and is colour for the synthetic scene.
struct MaskOption {
  std::string name;
  std::optional<bool> isColorSource;
  bool isInvertMask = false;
};

// One --set KEY=JSON.
struct PropertySetting {
  std::string key;
  Json value;
};

struct FrameRate {
  uint32_t num = 0;
  uint32_t denom = 1;
};

struct RunOptions {
  std::string input;            // recording directory; empty: the synthetic scene
  std::optional<int> frames;    // default: the whole recording, or 60 for the scene
  FrameOutput output;
  bool replace = false;  // remove another run's frames from output.directory first
  std::optional<int32_t> reduction;
  std::optional<int32_t> reset_period;
  bool playback = false;              // --playback
  std::optional<MeshLayout> layout;   // --layout
  std::optional<FrameRate> frame_rate;  // --frame-rate, or what the two above set
  bool remote = false;
  bool player = true;  // map "player_tof_stream" when there is a recording
  std::vector<MaskOption> masks;
  std::optional<int> mask_threshold;
  std::vector<PropertySetting> settings;
  std::vector<std::string> gets;
  bool hex = false;
  std::string preview;  // PNG path, empty: none
  PreviewView preview_view = PreviewView::kCamera;
  std::string stats;    // JSON-lines path, empty: none
  bool quiet = false;
  std::optional<int> log_level;
  int timeout_ms = 5000;  // longest wait for one frame
};

// The frames of the synthetic scene when --frames is not given.
constexpr int kSceneFrames = 60;

// Parsers of the option values that need more than a number. Each returns
// false with a one-line `error` that quotes the text.
bool ParseMaskOption(const std::string& text, MaskOption* mask, std::string* error);
bool ParseFrameRate(const std::string& text, FrameRate* rate, std::string* error);
// A level name (verbose, debug, info, warn, error, silent) or a number 2..8.
bool ParseLogLevel(const std::string& text, int* level, std::string* error);
// KEY=JSON where JSON is an object.
bool ParsePropertySetting(const std::string& text, PropertySetting* setting, std::string* error);
// "off" (no limit) or a fraction above 0.
bool ParseEdgeJump(const std::string& text, std::optional<float>* jump, std::string* error);

// The checks that span several options, and the frame rate that --playback
// and --layout stand for. False with a one-line `error` when the options
// contradict each other or ask for what cannot be written.
bool ResolveRunOptions(RunOptions* options, std::string* error);

}  // namespace zelto_cli
