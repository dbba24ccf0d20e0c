// Part 4.1, StreamSourceUtility::CreateProperty: one accessor per key, owned
// by the utility on success and destroyed on failure.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "properties/golden.h"
#include "properties/recording_source.h"
#include "weftcore/stream_source_utility.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Hex;
using zelto_test::RecordingSource;

class RegisteringUtility : public weftcore::StreamSourceUtility {
 public:
  weftcore::Status GetAllocator(const std::string&, weftcore::MemoryAllocator**) override {
    return weftcore::Status();
  }
  weftcore::Status RegisterProperty(weftcore::PropertyAccessor* accessor) override {
    ++registerCalls;
    if (refusal.IsError()) return refusal;
    registered.emplace_back(accessor);
    return weftcore::Status();
  }

  int registerCalls = 0;
  weftcore::Status refusal;
  std::vector<std::unique_ptr<weftcore::PropertyAccessor>> registered;
};

TEST(CreateProperty, RegistersOneAccessorUnderTheKeyThatReachesTheSource) {
  RegisteringUtility utility;
  RecordingSource<weftcore::FrameRateProperty> source;
  source.answer.num = 30;
  source.answer.denom = 1;
  const weftcore::Status status =
      utility.CreateProperty<weftcore::FrameRateProperty>("frame_rate_property", &source);
  ASSERT_TRUE(status.ok());
  ASSERT_EQ(utility.registered.size(), 1u);
  weftcore::PropertyAccessor& accessor = *utility.registered[0];
  EXPECT_EQ(accessor.key(), "frame_rate_property");

  void* out = nullptr;
  size_t size = 0;
  ASSERT_TRUE(accessor.Get("frame_rate_property", &out, &size, nullptr, 0).ok());
  const auto* bytes = static_cast<const uint8_t*>(out);
  EXPECT_EQ(Hex(Bytes(bytes, bytes + size)),
            Hex(Bytes{0x82, 0xA3, 'n', 'u', 'm', 0x1E, 0xA5, 'd', 'e', 'n', 'o', 'm', 0x01}));
  EXPECT_TRUE(accessor.Release("frame_rate_property", out, size).ok());
  EXPECT_EQ(source.getCalls, 1);
}

// The refused accessor is destroyed (the leak checker of the sanitizer build
// would report it otherwise) and the failure gets one trace entry.
TEST(CreateProperty, RefusedRegistrationDestroysTheAccessorAndAddsATrace) {
  RegisteringUtility utility;
  utility.refusal = weftcore::Status(weftcore::kLevelError, weftcore::kCauseAlreadyExists,
                                     "already registered")
                        .SetBlock("core");
  RecordingSource<weftcore::FrameRateProperty> source;
  const weftcore::Status status =
      utility.CreateProperty<weftcore::FrameRateProperty>("frame_rate_property", &source);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.cause(), 5);
  EXPECT_EQ(status.message(), "already registered");
  EXPECT_EQ(status.trace().size(), 1u);
  EXPECT_EQ(utility.registerCalls, 1);
  EXPECT_TRUE(utility.registered.empty());
}

}  // namespace
