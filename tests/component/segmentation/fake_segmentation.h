// A fake "zelto_segmentation_camera2_stream" for the host substitute: an
// in-process component whose sources answer the mask data list property with
// the requested masks (by name, in request order; unknown names are left
// out) among those held in memory of this process, fail Open, Start, Stop or the mask
// read on demand, and count what the mesh source asks of them.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "properties/zelto_segmentation_properties.h"
#include "weftcore/host/host_core.h"
#include "weftcore/status.h"

namespace zelto_test {

// One mask served by the fake; its bytes stay at a fixed address until the
// next SetMasks or Reset.
struct FakeMask {
  std::string name;
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<uint8_t> bytes;
  bool isColorSource = false;
  bool isInvertMask = false;
};

struct FakeSegmentationCounts {
  int opens = 0;   // successful Open calls
  int failedOpens = 0;
  int starts = 0;  // Start calls, failed or not
  int stops = 0;   // Stop calls, failed or not
  int closes = 0;  // Close calls of sources whose Open succeeded, failed or not
  int reads = 0;   // mask data list reads, failed or not
};

// The state shared by the test and every source the host creates (the host
// creates components through argument-less entry points).
class FakeSegmentation {
 public:
  static constexpr char kComponentName[] = "fake_segmentation";
  static constexpr char kSourceType[] = "segmentation";

  static FakeSegmentation& Instance();

  // Everything back to a stream that works and serves no mask.
  void Reset();
  // Registers the component with `core`; the configuration must route
  // "zelto_segmentation_camera2_stream" to kComponentName (AddTo does).
  static weftcore::Status Register(weftcore::host::HostCore* core);
  static void AddTo(weftcore::host::HostConfiguration* configuration);

  // Failures on demand, with the statuses below.
  void FailOpen(bool fail);
  void FailStart(bool fail);
  void FailStop(bool fail);
  void FailClose(bool fail);
  void FailRead(bool fail);
  static weftcore::Status OpenFailure();   // cause 4, "segmentation camera not found"
  static weftcore::Status StartFailure();  // cause 3, "segmentation camera busy"
  static weftcore::Status StopFailure();   // cause 7, "segmentation stop timed out"
  static weftcore::Status CloseFailure();  // cause 6, "segmentation close out of memory"
  static weftcore::Status ReadFailure();   // cause 3, "no segmentation result"

  void SetMasks(std::vector<FakeMask> masks);
  // Where the bytes of the index-th mask of the last SetMasks live.
  uint64_t MaskAddress(size_t index) const;
  FakeSegmentationCounts Counts() const;
  // The mask data list that each read received as its input, in order.
  std::vector<ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_> Requests() const;

  // Called by the fake sources.
  weftcore::Status OnOpen();
  weftcore::Status OnStart();
  weftcore::Status OnStop();
  weftcore::Status OnClose();
  weftcore::Status OnRead(ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_* list);

 private:
  FakeSegmentation() = default;

  mutable std::mutex mutex;
  bool failOpen = false;
  bool failStart = false;
  bool failStop = false;
  bool failClose = false;
  bool failRead = false;
  std::vector<FakeMask> masks;
  FakeSegmentationCounts counts;
  std::vector<ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_> requests;
};

}  // namespace zelto_test
