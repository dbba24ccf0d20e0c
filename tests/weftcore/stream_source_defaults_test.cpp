// The framework defaults of Part 1.1, one test per default.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "weftcore/weftcore.h"

namespace {

using weftcore::Status;

// Implements only the pure operations, so every default stays in place.
class MinimalSource : public weftcore::StreamSource {
 public:
  explicit MinimalSource(bool* destroyed = nullptr) : destroyed_(destroyed) {}
  ~MinimalSource() override {
    if (destroyed_ != nullptr) *destroyed_ = true;
  }
  void GetFrames(std::vector<weftcore::FrameInfo>* /*frames*/) override {}
  Status ReleaseFrame(const weftcore::FrameInfo& /*info*/,
                      const std::vector<uint32_t>* /*ids*/) override {
    return Status();
  }
  Status Open(weftcore::Core* /*core*/, weftcore::StreamSourceUtility* /*util*/) override {
    return Status();
  }
  using StreamSource::Open;
  Status Close() override { return Status(); }
  Status Start() override { return Status(); }
  Status Stop() override { return Status(); }

 private:
  bool* destroyed_;
};

class MinimalFactory : public weftcore::StreamSourceFactory {
 public:
  explicit MinimalFactory(bool* destroyed = nullptr) : destroyed_(destroyed) {}
  ~MinimalFactory() override {
    if (destroyed_ != nullptr) *destroyed_ = true;
  }
  void GetSupportedList(const weftcore::ComponentArgument& /*args*/,
                        std::vector<std::pair<std::string, int>>* /*list*/) override {}
  Status CreateSource(const std::pair<std::string, int>& /*type*/,
                      weftcore::StreamSource** /*source*/) override {
    return Status();
  }

 private:
  bool* destroyed_;
};

// Records the keys in registration order and owns what it accepts.
class KeyRecordingUtility : public weftcore::StreamSourceUtility {
 public:
  ~KeyRecordingUtility() override {
    for (weftcore::PropertyAccessor* accessor : accessors_) delete accessor;
  }
  Status GetAllocator(const std::string& /*key*/,
                      weftcore::MemoryAllocator** /*allocator*/) override {
    return Status();
  }
  Status RegisterProperty(weftcore::PropertyAccessor* accessor) override {
    keys.push_back(accessor->key());
    accessors_.push_back(accessor);
    return Status();
  }
  std::vector<std::string> keys;

 private:
  std::vector<weftcore::PropertyAccessor*> accessors_;
};

// Refuses every registration; the caller keeps the accessor.
class RefusingUtility : public weftcore::StreamSourceUtility {
 public:
  Status GetAllocator(const std::string& /*key*/,
                      weftcore::MemoryAllocator** /*allocator*/) override {
    return Status();
  }
  Status RegisterProperty(weftcore::PropertyAccessor* /*accessor*/) override {
    ++refusals;
    return Status(weftcore::kLevelError, weftcore::kCauseAlreadyExists, "refused");
  }
  int refusals = 0;
};

TEST(StreamSourceDefaults, OneArgumentOpenReturnsLevel1Cause14NotImplementedInBlockCore) {
  MinimalSource source;
  KeyRecordingUtility utility;
  const Status status = source.Open(&utility);
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), 14);
  EXPECT_EQ(status.message(), "StreamSource::Open is not implemented.");
  EXPECT_EQ(status.block(), "core");
}

TEST(StreamSourceDefaults, ChannelInfoSetReturnsCause10NotAvailableToSetTheKeyInBlockCore) {
  MinimalSource source;
  const weftcore::ChannelInfoProperty property;
  const Status status = source.Set(weftcore::kChannelInfoPropertyKey, &property);
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), 10);
  EXPECT_EQ(status.message(), "not available to set channel_info_property");
  EXPECT_EQ(status.block(), "core");
}

TEST(StreamSourceDefaults, FrameRateSetReturnsCause10NotAvailableToSetTheKeyInBlockCore) {
  MinimalSource source;
  const Status status = source.Set(weftcore::kFrameRatePropertyKey,
                                   static_cast<const weftcore::FrameRateProperty*>(nullptr));
  EXPECT_EQ(status.cause(), 10);
  EXPECT_EQ(status.message(), "not available to set frame_rate_property");
  EXPECT_EQ(status.block(), "core");
}

TEST(StreamSourceDefaults, GetsReturnCause14NotImplementedInBlockCore) {
  MinimalSource source;
  weftcore::ChannelInfoProperty channel_info;
  weftcore::FrameRateProperty frame_rate;
  for (const Status& status : {source.Get("channel_info_property", &channel_info),
                               source.Get("frame_rate_property", &frame_rate)}) {
    EXPECT_EQ(status.level(), 1);
    EXPECT_EQ(status.cause(), 14);
    EXPECT_EQ(status.message(), "StreamSource::Get is not implemented.");
    EXPECT_EQ(status.block(), "core");
  }
}

TEST(StreamSourceDefaults, CatchErrorSendingFrameDoesNothing) {
  MinimalSource source;
  const Status error(weftcore::kLevelError, weftcore::kCauseUnknown, "send failed");
  source.CatchErrorSendingFrame(error);
  source.CatchErrorSendingFrame(Status());
  EXPECT_EQ(error.message(), "send failed");
  EXPECT_TRUE(error.trace().empty());
}

TEST(StreamSourceDefaults, RegisterMandatoryPropertiesRegistersChannelInfoThenFrameRate) {
  MinimalSource source;
  KeyRecordingUtility utility;
  source.RegisterMandatoryProperties(&utility);
  EXPECT_EQ(utility.keys,
            (std::vector<std::string>{"channel_info_property", "frame_rate_property"}));
}

TEST(StreamSourceDefaults, RegisterMandatoryPropertiesDiscardsRefusedRegistrations) {
  MinimalSource source;
  RefusingUtility utility;
  source.RegisterMandatoryProperties(&utility);  // the refused accessors are deleted (ASan)
  EXPECT_EQ(utility.refusals, 2);
}

TEST(StreamSourceDefaults, RegisterMandatoryPropertiesWithNullUtilityDoesNothing) {
  MinimalSource source;
  source.RegisterMandatoryProperties(nullptr);
  SUCCEED();
}

TEST(StreamSourceDefaults, ReleaseSourceDestroysTheSource) {
  bool destroyed = false;
  MinimalFactory factory;
  factory.ReleaseSource(new MinimalSource(&destroyed));
  EXPECT_TRUE(destroyed);
  factory.ReleaseSource(nullptr);
}

TEST(StreamSourceDefaults, StandardComponentDestroysItsFactory) {
  bool destroyed = false;
  auto* factory = new MinimalFactory(&destroyed);
  {
    weftcore::StandardComponent component(factory);
    EXPECT_EQ(component.GetFactory(), factory);
  }
  EXPECT_TRUE(destroyed);
}

}  // namespace
