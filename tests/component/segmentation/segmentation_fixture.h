// The fixture of the segmentation suites (Parts 3.3, 3.4): the "mesh" stream
// of MeshSourceTest, with "zelto_segmentation_camera2_stream" served by
// FakeSegmentation and a camera that knows its calibration.
//
// The scene: the fake camera's 4 x 3 image, every pixel at 1000 mm, pixel
// (u, v) at x = u, y = v (FlatPointCloudFrame). The calibration maps that
// point to depth pixel (u, v) and to colour pixel (2u, 2v) of an 8 x 6 colour
// image, so a 4 x 3 depth mask or an 8 x 6 colour mask selects pixels one to
// one.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "masking/mask_settings_property.h"
#include "tests/component/mesh_source_test.h"
#include "tests/component/segmentation/fake_segmentation.h"

namespace zelto_test {

constexpr int16_t kSceneDepthMm = 1000;
constexpr uint64_t kSceneTimestamp = 777;
constexpr int kScenePixels = kFakeImageWidth * kFakeImageHeight;

ZeltoTof::ZeltoTofCalibrationSettingsProperty_ SceneCalibration();

// A mask on the depth image (4 x 3) or on the colour image (8 x 6) that
// selects the given depth pixels (row-major indices) with byte 200 and
// leaves the others at 0.
FakeMask DepthMask(const std::string& name, const std::vector<int>& pixels);
FakeMask ColorMask(const std::string& name, const std::vector<int>& pixels);

ZeltoSegmentation::ZeltoSegmentationMaskInfo_ MaskInfo(const std::string& name,
                                                       bool isColorSource, bool isInvertMask);
ZeltoMesh::ZeltoMeshMaskSettingsProperty_ MaskSettings(
    bool enabled, std::vector<ZeltoSegmentation::ZeltoSegmentationMaskInfo_> maskInfo,
    uint8_t maskThreshold = 55);

// The z of every vertex of a flat-layout mesh channel (frame rate 30/1),
// given its data address or its outgoing channel record.
std::vector<float> VertexDepths(const void* address);
std::vector<float> VertexDepths(const weftcore::ChannelRawData& channel);
// The metres the mesh builder gives a depth in millimetres: z / 1000 in float.
float Metres(int16_t depthMm);
// kScenePixels vertex depths: Metres(32001) at `masked`, the scene depth elsewhere.
std::vector<float> DepthsMaskedAt(const std::vector<int>& masked);

class SegmentationTest : public MeshSourceTest {
 protected:
  SegmentationTest();
  ~SegmentationTest() override;

  // Opens "mesh" like MeshSourceTest::OpenMesh, with the segmentation stream
  // routed. Use with ASSERT_NO_FATAL_FAILURE.
  void OpenMeshWithSegmentation();
  // OpenMeshWithSegmentation, then the frame rate 30/1 (flat layout) and
  // Start, on the source itself; the log is cleared.
  void OpenAndStartMesh();

  // The same through the host: the frame rate 30/1 as a serialized Set of
  // "frame_rate_property", then the stream's Start; the log is cleared.
  void OpenAndStartMeshThroughHost();
  // A serialized Set of `record` under `key` on the "mesh" stream.
  template <typename T>
  weftcore::Status SetThroughHost(const std::string& key, const T& record) {
    return mesh->SetProperty(key, &record);
  }
  // One GetFrame through the host, released at once: its vertex depths, or
  // nothing when no frame came.
  std::vector<float> HostFrameDepths();

  // The Set handler of the source, as the host's accessor calls it; checks
  // and drops the handler's log line and whatever was logged before it.
  void SetMaskSettings(const ZeltoMesh::ZeltoMeshMaskSettingsProperty_& settings);
  // One GetFrames call that must deliver one frame; its vertex depths.
  std::vector<float> ProduceFrameDepths();
  // The messages of the records logged since the last call, which must all be
  // Debug records of "ZeltoMesh"; the log is cleared.
  std::vector<std::string> TakeLogLines();

  bool SegmentationStreamIsOpen() const;
  weftcore::Stream* SegmentationStream() const { return peer().segmentationStream(); }
  const MaskedPointCloud& Masking() const { return peer().maskedPointCloud(); }
  int CalibrationReads() {
    return upstream.Camera()
        .Property<ZeltoTof::ZeltoTofCalibrationSettingsProperty_>(
            ZeltoTof::kZeltoTofCalibrationSettingsKey)
        .reads;
  }

  FakeSegmentation& segmentation = FakeSegmentation::Instance();
};

// A request entry as Parts 3.3 and 3.4 build it: name and flags from the mask
// info, every mask data field 0.
void ExpectRequest(const ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_& entry,
                   const std::string& name, bool isColorSource, bool isInvertMask);

}  // namespace zelto_test
