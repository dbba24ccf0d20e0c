// Masking through the host: the mesh stream asks the simulator's segmentation
// stream for the masks its clients name and blanks what they select; a
// segmentation stream that misbehaves costs a log line, never a frame.
#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "tests/component/mesh_source_fixture.h"

namespace zelto_test {
namespace {

using Lines = std::vector<std::string>;

ZeltoMesh::ZeltoMeshMaskSettingsProperty_ Masks(
    std::vector<ZeltoSegmentation::ZeltoSegmentationMaskInfo_> infos, uint8_t threshold = 55) {
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ settings;
  settings.enabled = !infos.empty();
  settings.maskInfo = std::move(infos);
  settings.maskThreshold = threshold;
  return settings;
}
const ZeltoSegmentation::ZeltoSegmentationMaskInfo_ kPerson{"person", false, false};
const ZeltoSegmentation::ZeltoSegmentationMaskInfo_ kFloor{"floor", true, false};
const ZeltoSegmentation::ZeltoSegmentationMaskInfo_ kNotPerson{"person", false, true};
const std::vector<int> kAll = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};

using Segmentation = MeshSourceTest;

TEST_F(Segmentation, BlanksWhatTheNamedMasksSelectFromTheNextFrame) {
  struct Case {
    const char* name;
    ZeltoMesh::ZeltoMeshMaskSettingsProperty_ settings;
    int level;                  // mesh reduction level
    std::vector<int> vertices;  // pixel of each vertex
    std::vector<int> masked;    // pixels whose vertex lies at 32.001 m
  } const cases[] = {
      {"off", Masks({}), 0, kAll, {}},
      {"depth mask", Masks({kPerson}), 0, kAll, {5, 6}},
      {"threshold above pixel 6", Masks({kPerson}, 150), 0, kAll, {5}},
      {"colour mask", Masks({kFloor}), 0, kAll, {8, 9, 10, 11}},
      {"inverted", Masks({kNotPerson}), 0, kAll, {0, 1, 2, 3, 4, 7, 8, 9, 10, 11}},
      {"both, every second pixel", Masks({kPerson, kFloor}), 1, {0, 2, 8, 10}, {8, 10}},
      {"off again", Masks({}), 0, kAll, {}},
  };
  ASSERT_TRUE(OpenHost(Device(), false).ok());
  weftcore::Stream* mesh = nullptr;
  ASSERT_TRUE(host->OpenStream("mesh", &mesh).ok());
  ASSERT_TRUE(mesh->Start().ok());
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ config;
    config.meshReductionLevel = row.level;
    ASSERT_TRUE(mesh->SetProperty(ZeltoMesh::kZeltoMeshAlgorithmConfigKey, &config).ok());
    ASSERT_TRUE(mesh->SetProperty(ZeltoMesh::kZeltoMeshMaskSettingsKey, &row.settings).ok());
    weftcore::Frame* frame = nullptr;
    ASSERT_TRUE(mesh->GetFrame(&frame, 0).ok() && frame);
    weftcore::Channel* channel = nullptr;
    weftcore::Channel::RawData raw;
    ASSERT_TRUE(frame->GetChannel(0, &channel).ok() && channel->GetRawData(&raw).ok());
    const std::vector<float> depths = DepthsOf(raw.address, raw.size);
    const float unmasked = Metres(static_cast<int>(frame->GetSequenceNumber() % 8 + 1) * 1000);
    std::vector<float> expected;
    for (int pixel : row.vertices) {
      const bool masked = std::count(row.masked.begin(), row.masked.end(), pixel) != 0;
      expected.push_back(masked ? kMasked : unmasked);
    }
    EXPECT_EQ(expected, depths);
    ASSERT_TRUE(mesh->ReleaseFrame(frame).ok());
  }
}

TEST_F(Segmentation, LogsEachFailureAndTriesAgainOnTheNextFrame) {
  struct Case {
    const char* name;
    std::set<std::string> ZeltoSim::SimFaults::*knob;
    const char* refused;  // what the knob lists
    const char* mask;
    Lines enabled;   // over two frames with masking on
    Lines disabled;  // over the frame that switches it off
  } const cases[] = {
      {"open", &ZeltoSim::SimFaults::failOpen, "segmentation", "person",
       {"Zelto Segmentation Stream cannot open cause:10 message:segmentation: open refused "
        "(fail_open)",
        "Zelto Segmentation Stream cannot open cause:10 message:segmentation: open refused "
        "(fail_open)"},
       {}},
      {"start", &ZeltoSim::SimFaults::failStart, "segmentation", "person",
       {"Zelto Segmentation Stream cannot start cause:10 message:segmentation: start refused "
        "(fail_start)",
        "Zelto Segmentation Stream cannot start cause:10 message:segmentation: start refused "
        "(fail_start)"},
       {}},
      {"mask read", &ZeltoSim::SimFaults::failGet, "kZeltoSegmentationMaskDataListKey", "person",
       {"Mask data cannot get cause:10 message:kZeltoSegmentationMaskDataListKey: get refused "
        "(fail_get)",
        "Mask data cannot get cause:10 message:kZeltoSegmentationMaskDataListKey: get refused "
        "(fail_get)"},
       {}},
      {"unknown mask", nullptr, "", "nobody",
       {"cause:2 message:Invalid mask data mask name:nobody address:0 size:0 width:0 height "
        "timestamp:0",
        "cause:2 message:Invalid mask data mask name:nobody address:0 size:0 width:0 height "
        "timestamp:0"},
       {}},
      {"stop (masking works until then)", &ZeltoSim::SimFaults::failStop, "segmentation",
       "person", {},
       {"Zelto Segmentation Stream cannot stop cause:10 message:segmentation: stop refused "
        "(fail_stop)"}},
      {"close (masking works until then)", &ZeltoSim::SimFaults::failClose, "segmentation",
       "person", {},
       {"Zelto Segmentation Stream cannot close cause:10 message:segmentation: close refused "
        "(fail_close)"}},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    ZeltoSim::HostOptions device = Device();
    if (row.knob != nullptr) (device.sim.faults.*row.knob).insert(row.refused);
    ASSERT_TRUE(OpenHost(device).ok());
    ASSERT_TRUE(source->Start().ok());
    GetFrames();  // the camera's configuration, read once
    ZeltoMesh::ZeltoMeshMaskSettingsProperty_ settings = Masks({{row.mask, false, false}});
    ASSERT_TRUE(source->Set("", &settings).ok());
    logs.Clear();
    for (int frame = 0; frame < 2; ++frame) {
      const std::vector<weftcore::FrameInfo> frames = GetFrames();
      ASSERT_EQ(1u, frames.size());  // a failure never costs the frame
      std::vector<float> expected(12, Metres(frame * 1000 + 2000));
      if (row.enabled.empty()) expected[5] = expected[6] = kMasked;
      EXPECT_EQ(expected, DepthsOf(frames[0].channels[0]));
    }
    Lines lines;
    for (const LogRecord& record : logs.records()) lines.push_back(record.message);
    EXPECT_EQ(row.enabled, lines);
    settings.enabled = false;
    ASSERT_TRUE(source->Set("", &settings).ok());
    logs.Clear();
    ASSERT_EQ(1u, GetFrames().size());
    lines.clear();
    for (const LogRecord& record : logs.records()) lines.push_back(record.message);
    EXPECT_EQ(row.disabled, lines);
    CloseSource();
  }
}

}  // namespace
}  // namespace zelto_test
