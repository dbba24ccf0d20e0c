#include "tests/component/segmentation/fake_segmentation.h"

#include <utility>

#include "weftcore/stream_source.h"
#include "weftcore/stream_source_factory.h"

namespace zelto_test {
namespace {

using ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_;

class FakeSegmentationSource final : public weftcore::StreamSource {
 public:
  void GetFrames(std::vector<weftcore::FrameInfo>* /*frames*/) override {}
  weftcore::Status ReleaseFrame(const weftcore::FrameInfo& /*frameinfo*/,
                                const std::vector<uint32_t>* /*ids*/) override {
    return weftcore::Status();
  }
  using weftcore::StreamSource::Open;
  weftcore::Status Open(weftcore::Core* /*core*/, weftcore::StreamSourceUtility* util) override {
    weftcore::Status status = FakeSegmentation::Instance().OnOpen();
    if (status.IsError()) return status;
    opened = true;
    return util->CreateProperty<ZeltoSegmentationMaskDataListProperty_, FakeSegmentationSource>(
        ZeltoSegmentation::kZeltoSegmentationMaskDataListKey, this);
  }
  weftcore::Status Close() override {
    if (!opened) return weftcore::Status();
    opened = false;
    return FakeSegmentation::Instance().OnClose();
  }
  weftcore::Status Start() override { return FakeSegmentation::Instance().OnStart(); }
  weftcore::Status Stop() override { return FakeSegmentation::Instance().OnStop(); }

  using weftcore::StreamSource::Get;
  using weftcore::StreamSource::Set;
  weftcore::Status Get(const std::string& /*key*/, ZeltoSegmentationMaskDataListProperty_* list) {
    return FakeSegmentation::Instance().OnRead(list);
  }
  weftcore::Status Set(const std::string& key, const ZeltoSegmentationMaskDataListProperty_*) {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseNotAvailable,
                            "not available to set %s", key.c_str());
  }

 private:
  bool opened = false;
};

class FakeSegmentationFactory final : public weftcore::StreamSourceFactory {
 public:
  void GetSupportedList(const weftcore::ComponentArgument& /*args*/,
                        std::vector<std::pair<std::string, int>>* list) override {
    list->emplace_back(FakeSegmentation::kSourceType, 0);
  }
  weftcore::Status CreateSource(const std::pair<std::string, int>& /*type*/,
                                weftcore::StreamSource** source) override {
    *source = new FakeSegmentationSource();
    return weftcore::Status();
  }
};

weftcore::StandardComponent* CreateFakeSegmentationComponent() {
  return new weftcore::StandardComponent(new FakeSegmentationFactory());
}

void DestroyFakeSegmentationComponent(weftcore::StandardComponent* component) {
  delete component;
}

}  // namespace

FakeSegmentation& FakeSegmentation::Instance() {
  static FakeSegmentation instance;
  return instance;
}

void FakeSegmentation::Reset() {
  std::lock_guard<std::mutex> lock(mutex);
  failOpen = failStart = failStop = failClose = failRead = false;
  masks.clear();
  counts = FakeSegmentationCounts();
  requests.clear();
}

weftcore::Status FakeSegmentation::Register(weftcore::host::HostCore* core) {
  return core->RegisterComponent(kComponentName, &CreateFakeSegmentationComponent,
                                 &DestroyFakeSegmentationComponent);
}

void FakeSegmentation::AddTo(weftcore::host::HostConfiguration* configuration) {
  configuration->streams[ZeltoSegmentation::kSegmentationStreamKey] =
      weftcore::host::StreamEntry{kComponentName, kSourceType};
}

void FakeSegmentation::FailOpen(bool fail) {
  std::lock_guard<std::mutex> lock(mutex);
  failOpen = fail;
}
void FakeSegmentation::FailStart(bool fail) {
  std::lock_guard<std::mutex> lock(mutex);
  failStart = fail;
}
void FakeSegmentation::FailStop(bool fail) {
  std::lock_guard<std::mutex> lock(mutex);
  failStop = fail;
}
void FakeSegmentation::FailClose(bool fail) {
  std::lock_guard<std::mutex> lock(mutex);
  failClose = fail;
}
void FakeSegmentation::FailRead(bool fail) {
  std::lock_guard<std::mutex> lock(mutex);
  failRead = fail;
}

weftcore::Status FakeSegmentation::OpenFailure() {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseNotFound,
                          "segmentation camera not found");
}
weftcore::Status FakeSegmentation::StartFailure() {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidState,
                          "segmentation camera busy");
}
weftcore::Status FakeSegmentation::StopFailure() {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseTimeout,
                          "segmentation stop timed out");
}
weftcore::Status FakeSegmentation::CloseFailure() {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseOutOfMemory,
                          "segmentation close out of memory");
}
weftcore::Status FakeSegmentation::ReadFailure() {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidState,
                          "no segmentation result");
}

void FakeSegmentation::SetMasks(std::vector<FakeMask> newMasks) {
  std::lock_guard<std::mutex> lock(mutex);
  masks = std::move(newMasks);
}

uint64_t FakeSegmentation::MaskAddress(size_t index) const {
  std::lock_guard<std::mutex> lock(mutex);
  return reinterpret_cast<uint64_t>(masks.at(index).bytes.data());
}

FakeSegmentationCounts FakeSegmentation::Counts() const {
  std::lock_guard<std::mutex> lock(mutex);
  return counts;
}

std::vector<ZeltoSegmentationMaskDataListProperty_> FakeSegmentation::Requests() const {
  std::lock_guard<std::mutex> lock(mutex);
  return requests;
}

weftcore::Status FakeSegmentation::OnOpen() {
  std::lock_guard<std::mutex> lock(mutex);
  if (failOpen) {
    ++counts.failedOpens;
    return OpenFailure();
  }
  ++counts.opens;
  return weftcore::Status();
}

weftcore::Status FakeSegmentation::OnStart() {
  std::lock_guard<std::mutex> lock(mutex);
  ++counts.starts;
  return failStart ? StartFailure() : weftcore::Status();
}

weftcore::Status FakeSegmentation::OnStop() {
  std::lock_guard<std::mutex> lock(mutex);
  ++counts.stops;
  return failStop ? StopFailure() : weftcore::Status();
}

weftcore::Status FakeSegmentation::OnClose() {
  std::lock_guard<std::mutex> lock(mutex);
  ++counts.closes;
  return failClose ? CloseFailure() : weftcore::Status();
}

weftcore::Status FakeSegmentation::OnRead(ZeltoSegmentationMaskDataListProperty_* list) {
  std::lock_guard<std::mutex> lock(mutex);
  ++counts.reads;
  requests.push_back(*list);
  if (failRead) return ReadFailure();
  // The reply: the held mask of each requested name, in request order.
  const ZeltoSegmentationMaskDataListProperty_ request = *list;
  list->data.clear();
  for (const auto& wanted : request.data) {
    for (const FakeMask& mask : masks) {
      if (mask.name != wanted.name) continue;
      ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_ data;
      data.name = mask.name;
      data.maskDataAddress = reinterpret_cast<uint64_t>(mask.bytes.data());
      data.maskDataSize = mask.bytes.size();
      data.maskDataWidth = mask.width;
      data.maskDataHeight = mask.height;
      data.maskDataTimestamp = 1000 + static_cast<uint64_t>(counts.reads);
      data.isColorSource = mask.isColorSource;
      data.isInvertMask = mask.isInvertMask;
      list->data.push_back(data);
      break;
    }
  }
  return weftcore::Status();
}

}  // namespace zelto_test
