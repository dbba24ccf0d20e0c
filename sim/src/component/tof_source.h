// "zelto_tof_camera2_stream" (live) and "player_tof_stream" (recorded): the
// same device input, each stream with its own frame cursor.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "component/frame_prefetcher.h"
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
  // as the "point_cloud" knob shapes it). Waits only while the next frame is
  // being decoded. A frame that cannot be read ends the delivery until the
  // next Start, with one error line naming its file in the platform log.
  void GetFrames(std::vector<weftcore::FrameInfo>* frames) override;
  weftcore::Status ReleaseFrame(const weftcore::FrameInfo& frameinfo,
                                const std::vector<uint32_t>* referenced_channel_ids) override;
  weftcore::Status Open(weftcore::Core* core, weftcore::StreamSourceUtility* util) override;
  weftcore::Status Close() override;
  // Start rewinds to the first frame and starts decoding ahead (cause 6 when
  // the decoding threads cannot be started); Stop and Close end the decoding.
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
  weftcore::Status BuildFrame(uint64_t index, weftcore::FrameInfo* frame);
  void EndDecoding();

  SimDevice* device_;  // owned by the factory
  std::string type_;   // tof_camera or tof_player, for the failure knobs
  weftcore::MemoryAllocator* allocator_ = nullptr;
  // Frame calls and Start/Stop may come from different threads: a frame
  // call takes its own reference, so Stop never pulls the decoder away
  // under it. Null while stopped.
  std::mutex decoderMutex_;
  std::shared_ptr<FramePrefetcher> decoder_;
  std::vector<int16_t> points_;  // the frame being delivered (frame calls only)
};

}  // namespace ZeltoSim
