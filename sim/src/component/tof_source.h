// "zelto_tof_camera2_stream" (live) and "player_tof_stream" (recorded): the
// same device input, each stream with its own frame cursor.
#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "component/sim_device.h"
#include "weftcore/stream_source.h"

namespace ZeltoSim {

class TofSource final : public weftcore::StreamSource {
 public:
  TofSource(SimDevice* device, std::string type) : device_(device), type_(std::move(type)) {}

  using weftcore::StreamSource::Get;
  using weftcore::StreamSource::Set;

  // One frame per call while started and frames remain: channel 0 depth,
  // 1 confidence, 2 point cloud, as the process targets ask (the point cloud
  // as the "point_cloud" knob shapes it).
  void GetFrames(std::vector<weftcore::FrameInfo>* frames) override;
  weftcore::Status ReleaseFrame(const weftcore::FrameInfo& frameinfo,
                                const std::vector<uint32_t>* referenced_channel_ids) override;
  weftcore::Status Open(weftcore::Core* core, weftcore::StreamSourceUtility* util) override;
  weftcore::Status Close() override;
  // Start rewinds to the first frame.
  weftcore::Status Start() override;
  weftcore::Status Stop() override;

  weftcore::Status Get(const std::string& key, weftcore::ChannelInfoProperty* property) override;
  weftcore::Status Get(const std::string& key, weftcore::FrameRateProperty* property) override;
  weftcore::Status Get(const std::string& key,
                       ZeltoTof::ZeltoTofCamera2ConfigurationProperty_* property);
  weftcore::Status Set(const std::string& key,
                       const ZeltoTof::ZeltoTofCamera2ConfigurationProperty_* property);
  weftcore::Status Get(const std::string& key,
                       ZeltoTof::ZeltoTofCalibrationSettingsProperty_* property);
  weftcore::Status Set(const std::string& key,
                       const ZeltoTof::ZeltoTofCalibrationSettingsProperty_* property);
  weftcore::Status Get(const std::string& key, ZeltoTof::ZeltoTofProcessTargetsProperty_* property);
  weftcore::Status Set(const std::string& key,
                       const ZeltoTof::ZeltoTofProcessTargetsProperty_* property);

 private:
  bool FrameIsDue(uint64_t index) const;
  weftcore::Status BuildFrame(uint64_t index, weftcore::FrameInfo* frame);

  SimDevice* device_;  // owned by the factory
  std::string type_;   // tof_camera or tof_player, for the failure knobs
  weftcore::MemoryAllocator* allocator_ = nullptr;
  bool started_ = false;
  uint64_t nextIndex_ = 0;
  std::chrono::steady_clock::time_point startTime_;
  std::vector<int16_t> points_;  // scratch, reused between frames
};

}  // namespace ZeltoSim
