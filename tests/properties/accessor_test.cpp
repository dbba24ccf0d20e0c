// Property access between bytes and handlers: the accessor a source
// registers (client bytes in, handler called, answer array out), its
// registration, and a consumer's typed read of an upstream stream's property.
#include <gtest/gtest.h>

#include <cstring>
#include <optional>

#include "support/bytes.h"
#include "weftcore/framework_properties.h"
#include "weftcore/stream.h"
#include "weftcore/stream_source_utility.h"

namespace zelto_test {
namespace {

using Rate = weftcore::FrameRateProperty;
using weftcore::Status;
using Calls = std::vector<Bytes>;

Status Failure(weftcore::Cause cause) { return Status(weftcore::kLevelError, cause, "failed"); }

// A source's typed handlers; `seen` holds each record they were given, encoded.
struct Handler {
  Status Get(const std::string&, Rate* rate) {
    seen.push_back(Encode(*rate));
    if (failure.ok()) *rate = Rate{30, 1};
    return failure;
  }
  Status Set(const std::string&, const Rate* rate) {
    seen.push_back(rate ? Encode(*rate) : Bytes());
    return rate ? failure : Failure(weftcore::kCauseInvalidArgument);
  }
  Calls seen;
  Status failure;
};
using Accessor = weftcore::DeserializedPropertyAccessor<Handler, Rate>;

const Bytes kRate30 = {0x82, 0xA3, 'n', 'u', 'm', 0x1E, 0xA5, 'd', 'e', 'n', 'o', 'm', 0x01};
const Bytes kNotAMap = {0x92, 0x01, 0x02};

TEST(Accessor, SetHandsTheHandlerTheDecodedRecordOrNoneAndReturnsItsStatus) {
  struct Case { const char* name; const uint8_t* bytes; size_t size; int cause; Calls seen; };
  const Case cases[] = {
      {"record", kRate30.data(), 13, 0, {kRate30}},
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

  handler.failure = Failure(weftcore::kCauseNotFound);
  const Bytes denom9 = Cat({{0x81}, Key("denom"), {0x09}});
  int sentinel = 0;
  out = &sentinel;
  size = 99;
  EXPECT_EQ(accessor.Get("key", &out, &size, denom9.data(), denom9.size()).cause(), 4);
  EXPECT_EQ(handler.seen, (Calls{Encode(Rate{}), Encode(Rate{0, 9})}));
  EXPECT_EQ(out, &sentinel);
  EXPECT_EQ(size, 99u);
}

// Under LSan, an accessor the utility refused would show up as a leak.
TEST(Accessor, RefusedRegistrationDestroysTheAccessor) {
  struct RefusingUtility : weftcore::StreamSourceUtility {
    Status GetAllocator(const std::string&, weftcore::MemoryAllocator**) override { return {}; }
    Status RegisterProperty(weftcore::PropertyAccessor*) override {
      return Failure(weftcore::kCauseAlreadyExists);
    }
  } utility;
  Handler handler;
  const Status status = utility.CreateProperty<Rate>("frame_rate_property", &handler);
  EXPECT_EQ(status.cause(), weftcore::kCauseAlreadyExists);
  EXPECT_EQ(status.trace().size(), 1u);
}

// An upstream stream with a scripted property reply. It frees a reply only
// when it is handed back, so LSan sees any that is not.
struct UpstreamStream : weftcore::Stream {
  Status Start() override { return {}; }
  Status Stop() override { return {}; }
  Status GetFrame(weftcore::Frame**, int32_t) override { return {}; }
  Status ReleaseFrame(weftcore::Frame*) override { return {}; }
  Status GetSerializedProperty(const std::string&, const void* in, size_t in_size, void** property,
                               size_t* size) override {
    input.assign(static_cast<const uint8_t*>(in), static_cast<const uint8_t*>(in) + in_size);
    if (reply) *property = std::memcpy(new uint8_t[reply->size()], reply->data(), reply->size());
    if (reply) *size = reply->size();
    return read;
  }
  Status ReleaseSerializedProperty(const std::string&, void* property, size_t) override {
    ++releases;
    delete[] static_cast<uint8_t*>(property);
    return release;
  }
  Status SetSerializedProperty(const std::string&, const void*, size_t) override { return {}; }
  weftcore::StreamFunctionLockManager* GetFunctionLockManager() override { return &locks; }

  weftcore::StreamFunctionLockManager locks;
  std::optional<Bytes> reply;
  Status read, release;
  Bytes input;
  int releases = 0;
};

TEST(StreamGetProperty, HandsEveryReplyBackAndReportsTheFirstFailure) {
  const Bytes unchanged = Encode(Rate{7, 9});
  const Status readFailure = Failure(weftcore::kCauseNotFound);
  const Status releaseFailure = Failure(weftcore::kCauseUnknown);
  // `after`: the caller's record afterwards, encoded.
  struct Case {
    const char* name; std::optional<Bytes> reply; Status read, release; int releases, cause;
    Bytes after;
  };
  const Case cases[] = {
      {"reply decoded", kRate30, Status(), Status(), 1, 0, kRate30},
      {"failed read with a reply", kRate30, readFailure, releaseFailure, 1, 4, unchanged},
      {"failed read without a reply", std::nullopt, readFailure, Status(), 0, 4, unchanged},
      {"undecodable reply", kNotAMap, Status(), releaseFailure, 1, 8, unchanged},
      {"failed release", kRate30, Status(), releaseFailure, 1, 1, kRate30},
      {"no reply", std::nullopt, Status(), Status(), 0, 2, unchanged},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    UpstreamStream stream;
    stream.reply = row.reply;
    stream.read = row.read;
    stream.release = row.release;
    Rate rate{7, 9};
    const Status status = stream.GetProperty("frame_rate_property", &rate);
    EXPECT_EQ(Hex(stream.input), Hex(unchanged));  // the caller's record is the request
    EXPECT_EQ(stream.releases, row.releases);
    EXPECT_EQ(status.cause(), row.cause) << status.message();
    EXPECT_EQ(Hex(Encode(rate)), Hex(row.after));
  }
}

}  // namespace
}  // namespace zelto_test
