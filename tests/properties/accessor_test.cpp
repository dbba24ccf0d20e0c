// The accessor a source registers for a property: client bytes in, the
// source's typed handler called, an answer array out, and what happens when
// the host refuses the registration.
#include <gtest/gtest.h>

#include "support/bytes.h"
#include "weftcore/framework_properties.h"
#include "weftcore/host/host_stream.h"

namespace zelto_test {
namespace {

using Rate = weftcore::FrameRateProperty;
using weftcore::Status;
using Calls = std::vector<Bytes>;

const Bytes kRate30 = {0x82, 0xA3, 'n', 'u', 'm', 0x1E, 0xA5, 'd', 'e', 'n', 'o', 'm', 0x01};
const Bytes kNotAMap = {0x92, 0x01, 0x02};
const Bytes kEmptyMap = {0x80};

// A source's typed handlers; `seen` holds each record they were given, encoded.
struct Handler {
  Status Get(const std::string&, Rate* rate) {
    seen.push_back(Encode(*rate));
    *rate = Rate{30, 1};
    return failure;
  }
  Status Set(const std::string&, const Rate* rate) {
    seen.push_back(rate ? Encode(*rate) : Bytes());
    return rate ? failure : Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument, "none");
  }
  Calls seen;
  Status failure;
};
using Accessor = weftcore::DeserializedPropertyAccessor<Handler, Rate>;

TEST(Accessor, SetHandsTheHandlerTheDecodedRecordOrNoneAndReturnsItsStatus) {
  struct Case { const char* name; const uint8_t* bytes; size_t size; int cause; Calls seen; };
  const Case cases[] = {
      {"record", kRate30.data(), 13, 0, {kRate30}},
      {"an empty map is a record of defaults", kEmptyMap.data(), 1, 0, {Encode(Rate{})}},
      {"null bytes reach the handler as no record", nullptr, 13, 2, {Bytes()}},
      {"size 0 reaches the handler as no record", kRate30.data(), 0, 2, {Bytes()}},
      {"undecodable bytes never reach the handler", kNotAMap.data(), 3, 8, {}},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    Handler handler;
    const Status status = Accessor("key", &handler).Set("key", row.bytes, row.size);
    EXPECT_EQ(handler.seen, row.seen);
    EXPECT_EQ(status.cause(), row.cause) << status.message();
    EXPECT_EQ(status.trace().size(), row.cause == 0 ? 0u : 1u);
  }
}

TEST(Accessor, GetIgnoresAnEmptyInputAndWritesNothingWhenTheHandlerFails) {
  Handler handler;
  Accessor accessor("key", &handler);
  void* out = nullptr;
  size_t size = 0;
  ASSERT_TRUE(accessor.Get("key", &out, &size, kNotAMap.data(), 0).ok());
  const auto* answer = static_cast<const uint8_t*>(out);
  EXPECT_EQ(Hex(Bytes(answer, answer + size)), Hex(kRate30));
  EXPECT_TRUE(accessor.Release("key", out, size).ok());  // LSan: the array is freed
  out = nullptr;
  size = 0;
  handler.failure = Status(weftcore::kLevelError, weftcore::kCauseNotFound, "gone");
  const Bytes denom9 = Cat({{0x81}, Key("denom"), {0x09}});
  EXPECT_EQ(accessor.Get("key", &out, &size, denom9.data(), denom9.size()).cause(), 4);
  EXPECT_EQ(handler.seen, (Calls{Encode(Rate{}), Encode(Rate{0, 9})}));
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(size, 0u);
}

// Under LSan, an accessor the host refused would show up as a leak.
TEST(Accessor, RefusedRegistrationDestroysTheAccessor) {
  weftcore::host::HostStreamUtility utility(nullptr);
  Handler handler;
  ASSERT_TRUE(utility.CreateProperty<Rate>("frame_rate_property", &handler).ok());
  const Status refused = utility.CreateProperty<Rate>("frame_rate_property", &handler);
  EXPECT_EQ(refused.cause(), weftcore::kCauseAlreadyExists);
  EXPECT_EQ(refused.trace().size(), 1u);
}

}  // namespace
}  // namespace zelto_test
