// The device behind the sim's four sources: the input (recording or
// synthetic scene), the settings that its streams share, and the masks.
// Thread-safe: property handlers and frame calls may run at the same time.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "properties/zelto_log_level_property.h"
#include "properties/zelto_runtime_settings_property.h"
#include "properties/zelto_segmentation_properties.h"
#include "properties/zelto_tof_properties.h"
#include "weftcore/status.h"
#include "zelto_sim/recording.h"
#include "zelto_sim/sim_options.h"
#include "zelto_sim/synthetic_scene.h"

namespace ZeltoSim {

class SimDevice {
 public:
  // Loads and validates the recording named by options.input, if any.
  static weftcore::Status Create(const SimOptions& options, std::unique_ptr<SimDevice>* device);

  const SimOptions& options() const { return options_; }
  const Intrinsics& intrinsics() const { return intrinsics_; }
  ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ CurrentConfiguration() const;
  const ZeltoTof::ZeltoTofCalibrationSettingsProperty_& Calibration() const { return calibration_; }

  // Frames per Start: the recording's count capped by options.frames, or
  // options.frames for the synthetic scene (0 = endless).
  uint64_t FrameLimit() const;
  uint64_t FrameTimestamp(uint64_t index) const;
  // The packed point cloud of frame `index` (width * height * 3 int16).
  weftcore::Status ReadFrame(uint64_t index, std::vector<int16_t>* points) const;
  // The masks answer for the frame delivered last by any depth stream.
  void NoteDelivered(uint64_t index);
  // Fills every requested entry (by name) with the mask of the current
  // frame; unknown names get zero address, size and width.
  void AnswerMasks(ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_* list);

  ZeltoTof::ZeltoTofProcessTargetsProperty_ ProcessTargets() const;
  void SetProcessTargets(const ZeltoTof::ZeltoTofProcessTargetsProperty_& targets);
  Zelto::ZeltoLogLevelProperty_ LogLevel() const;
  void SetLogLevel(const Zelto::ZeltoLogLevelProperty_& level);
  Zelto::ZeltoRuntimeSettingsProperty_ RuntimeSettings() const;
  void SetRuntimeSettings(const Zelto::ZeltoRuntimeSettingsProperty_& settings);

 private:
  // One mask's bytes. The vector is sized once, so its address stays valid
  // for the device's life; its content follows the current frame.
  struct MaskBuffer {
    std::string name;
    bool isColorSource = false;
    uint32_t width = 0;
    uint32_t height = 0;
    size_t track = 0;  // index into recording_.masks (recordings only)
    std::vector<uint8_t> bytes;
    uint64_t frame = UINT64_MAX;  // frame the bytes belong to; none yet
  };

  explicit SimDevice(const SimOptions& options);
  bool Refresh(MaskBuffer* mask, uint64_t frame) const;

  SimOptions options_;
  bool hasRecording_ = false;
  Recording recording_;
  std::unique_ptr<const SyntheticScene> scene_;  // when there is no recording
  Intrinsics intrinsics_;
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ calibration_;

  mutable std::mutex mutex_;  // guards everything below
  std::vector<MaskBuffer> masks_;
  uint64_t currentFrame_ = 0;
  ZeltoTof::ZeltoTofProcessTargetsProperty_ processTargets_;
  Zelto::ZeltoLogLevelProperty_ logLevel_;
  Zelto::ZeltoRuntimeSettingsProperty_ runtimeSettings_;
};

}  // namespace ZeltoSim
