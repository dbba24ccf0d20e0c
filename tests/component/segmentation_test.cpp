// Masking through the host: the mesh stream blanks what the named masks of the simulator
// select; a segmentation stream that misbehaves costs a log line, never a frame.
#include <algorithm>
#include <string>
#include <vector>

#include "tests/component/mesh_source_fixture.h"

namespace zelto_test {
namespace {

using Lines = std::vector<std::string>;

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
      {"off", {false, {kPerson}, 55}, 0, kAll, {}},
      {"depth mask", {true, {kPerson}, 55}, 0, kAll, {5, 6}},
      {"threshold above pixel 6", {true, {kPerson}, 150}, 0, kAll, {5}},
      {"colour mask", {true, {kFloor}, 55}, 0, kAll, {8, 9, 10, 11}},
      {"inverted", {true, {kNotPerson}, 55}, 0, kAll, {0, 1, 2, 3, 4, 7, 8, 9, 10, 11}},
      {"both, every second pixel", {true, {kPerson, kFloor}, 55}, 1, {0, 2, 8, 10}, {8, 10}},
      {"off again", {false, {kPerson}, 55}, 0, kAll, {}},
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
  const std::string stream = "Zelto Segmentation Stream cannot ";
  const std::string segmentation = "segmentation", maskList = "kZeltoSegmentationMaskDataListKey";
  struct Case {
    std::string knob, value, mask, line;
    bool whenSwitchedOff;  // else on each of two frames with masking on
  } const cases[] = {
      {"fail_open", segmentation, "person",
       stream + "open cause:10 message:segmentation: open refused (fail_open)", false},
      {"fail_start", segmentation, "person",
       stream + "start cause:10 message:segmentation: start refused (fail_start)", false},
      {"fail_get", maskList, "person",
       "Mask data cannot get cause:10 message:" + maskList + ": get refused (fail_get)", false},
      {"", "", "nobody",
       "cause:2 message:Invalid mask data mask name:nobody address:0 size:0 width:0 height "
       "timestamp:0", false},
      {"fail_stop", segmentation, "person",
       stream + "stop cause:10 message:segmentation: stop refused (fail_stop)", true},
      {"fail_close", segmentation, "person",
       stream + "close cause:10 message:segmentation: close refused (fail_close)", true},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.line);
    ASSERT_TRUE(OpenHost(Device(row.knob, row.value)).ok());
    ASSERT_TRUE(source->Start().ok());
    GetFrames();  // reads the camera's configuration
    ZeltoMesh::ZeltoMeshMaskSettingsProperty_ settings{true, {{row.mask, false, false}}, 55};
    ASSERT_TRUE(source->Set("", &settings).ok());
    logs.Clear();
    for (int frame = 0; frame < 2; ++frame) {
      const std::vector<weftcore::FrameInfo> frames = GetFrames();
      ASSERT_EQ(1u, frames.size());  // a failure never costs the frame
      std::vector<float> expected(12, Metres(frame * 1000 + 2000));
      if (row.whenSwitchedOff) expected[5] = expected[6] = kMasked;
      EXPECT_EQ(expected, DepthsOf(frames[0].channels[0]));
    }
    EXPECT_EQ(row.whenSwitchedOff ? Lines() : Lines(2, row.line), Messages());
    settings.enabled = false;
    ASSERT_TRUE(source->Set("", &settings).ok());
    logs.Clear();
    ASSERT_EQ(1u, GetFrames().size());
    EXPECT_EQ(row.whenSwitchedOff ? Lines(1, row.line) : Lines(), Messages());
    CloseSource();
  }
}

}  // namespace
}  // namespace zelto_test
