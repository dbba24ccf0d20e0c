// Part 4.1, DeserializedPropertyAccessor: Set, Get and Release, with the
// accessor edge cases of Part 4.1.
#include <gtest/gtest.h>

#include "properties/decode_expectations.h"
#include "properties/golden.h"
#include "properties/recording_source.h"
#include "weftcore/property_accessor.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::ExpectFailure;
using zelto_test::Hex;
using zelto_test::Key;
using zelto_test::RecordingSource;
using zelto_test::TypeMismatchMessage;

using Config = ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_;
using ConfigSource = RecordingSource<Config>;
using ConfigAccessor = weftcore::DeserializedPropertyAccessor<ConfigSource, Config>;

constexpr char kKey[] = "kZeltoMeshAlgorithmConfigKey";

Config MakeConfig(int32_t level, int32_t period) {
  Config config;
  config.meshReductionLevel = level;
  config.resetTrianglePeriod = period;
  return config;
}

Bytes ConfigBytes(uint8_t level, uint8_t period) {
  return Cat({{0x82}, Key("meshReductionLevel"), {level}, Key("resetTrianglePeriod"), {period}});
}

void ExpectNullRecordFailure(const weftcore::Status& status) {
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.message(), "property is null.");
  EXPECT_EQ(status.block(), "ZeltoMesh");
  EXPECT_EQ(status.trace().size(), 1u);
}

TEST(Part41EdgeCases, AccessorSetWithANullPointerCallsTheHandlerWithANullRecord) {
  ConfigSource source;
  ConfigAccessor accessor(kKey, &source);
  const Bytes bytes = ConfigBytes(1, 2);
  ExpectNullRecordFailure(accessor.Set(kKey, nullptr, bytes.size()));
  EXPECT_EQ(source.setCalls, 1);
  EXPECT_FALSE(source.received.has_value());
  EXPECT_EQ(source.lastKey, kKey);
}

TEST(Part41EdgeCases, AccessorSetWithASizeOf0CallsTheHandlerWithANullRecord) {
  ConfigSource source;
  ConfigAccessor accessor(kKey, &source);
  const Bytes bytes = ConfigBytes(1, 2);
  ExpectNullRecordFailure(accessor.Set(kKey, bytes.data(), 0));
  EXPECT_EQ(source.setCalls, 1);
  EXPECT_FALSE(source.received.has_value());
}

TEST(Part41EdgeCases, AccessorGetWithAnInputSizeOf0AndANonNullInputPointerIgnoresTheInput) {
  ConfigSource source;
  source.answer = MakeConfig(3, 4);
  ConfigAccessor accessor(kKey, &source);
  const Bytes garbage = {0xC1, 0xC1, 0xC1};
  void* out = nullptr;
  size_t size = 0;
  ASSERT_TRUE(accessor.Get(kKey, &out, &size, garbage.data(), 0).ok());
  ASSERT_TRUE(source.received.has_value());
  EXPECT_TRUE(*source.received == Config{});
  accessor.Release(kKey, out, size);
}

TEST(Part41EdgeCases, GetOfARecordNeverYieldsAnEmptyEncodingSoTheOutPointerIsNeverNull) {
  RecordingSource<ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_> source;
  weftcore::DeserializedPropertyAccessor<
      decltype(source), ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_>
      accessor("kZeltoSegmentationMaskDataListKey", &source);
  void* out = nullptr;
  size_t size = 0;
  ASSERT_TRUE(accessor.Get("kZeltoSegmentationMaskDataListKey", &out, &size, nullptr, 0).ok());
  ASSERT_NE(out, nullptr);
  const auto* bytes = static_cast<const uint8_t*>(out);
  EXPECT_EQ(Hex(Bytes(bytes, bytes + size)), Hex(Bytes{0x81, 0xA4, 'd', 'a', 't', 'a', 0x90}));
  EXPECT_TRUE(accessor.Release("kZeltoSegmentationMaskDataListKey", out, size).ok());
}

TEST(AccessorSet, DecodesIntoAFreshRecordAndCallsTheHandlerWithTheKey) {
  ConfigSource source;
  ConfigAccessor accessor(kKey, &source);
  const Bytes bytes = Cat({{0x81}, Key("meshReductionLevel"), {0x02}});
  ASSERT_TRUE(accessor.Set("any key", bytes.data(), bytes.size()).ok());
  EXPECT_EQ(source.setCalls, 1);
  EXPECT_EQ(source.lastKey, "any key");
  ASSERT_TRUE(source.received.has_value());
  EXPECT_TRUE(*source.received == MakeConfig(2, 0));
}

TEST(AccessorSet, DecodingFailureIsReturnedWithATraceAndTheHandlerIsNotCalled) {
  ConfigSource source;
  ConfigAccessor accessor(kKey, &source);
  const Bytes bytes = {0x92, 0x01, 0x02};
  const weftcore::Status status = accessor.Set(kKey, bytes.data(), bytes.size());
  ExpectFailure(status, 8, TypeMismatchMessage(3));
  EXPECT_EQ(status.trace().size(), 1u);
  EXPECT_EQ(source.setCalls, 0);
}

TEST(AccessorSet, HandlerFailureIsReturnedWithOneTraceEntry) {
  ConfigSource source;
  source.failure = weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument,
                                    "mesh reduction level must be equal or greater than zero.")
                       .SetBlock("ZeltoMesh");
  ConfigAccessor accessor(kKey, &source);
  const Bytes bytes = ConfigBytes(0xFF, 5);
  const weftcore::Status status = accessor.Set(kKey, bytes.data(), bytes.size());
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.message(), "mesh reduction level must be equal or greater than zero.");
  EXPECT_EQ(status.block(), "ZeltoMesh");
  ASSERT_EQ(status.trace().size(), 1u);
  EXPECT_EQ(status.trace()[0].file, "");
  EXPECT_EQ(status.trace()[0].line, 0);
  EXPECT_TRUE(*source.received == MakeConfig(-1, 5));
}

TEST(AccessorGet, NullOutPointerFailsFirst) {
  ConfigSource source;
  ConfigAccessor accessor(kKey, &source);
  ExpectFailure(accessor.Get(kKey, nullptr, nullptr, nullptr, 5), 2,
                "serialized_property is null");
  EXPECT_EQ(source.getCalls, 0);
}

TEST(AccessorGet, NullOutSizeFails) {
  ConfigSource source;
  ConfigAccessor accessor(kKey, &source);
  void* out = nullptr;
  ExpectFailure(accessor.Get(kKey, &out, nullptr, nullptr, 5), 2, "serialized_size is null");
  EXPECT_EQ(source.getCalls, 0);
}

TEST(AccessorGet, NonZeroInputSizeWithNullInputFails) {
  ConfigSource source;
  ConfigAccessor accessor(kKey, &source);
  void* out = nullptr;
  size_t size = 0;
  ExpectFailure(accessor.Get(kKey, &out, &size, nullptr, 5), 2,
                "serialized_input_property is null");
  EXPECT_EQ(source.getCalls, 0);
}

TEST(AccessorGet, InputIsDecodedIntoTheRecordTheHandlerSees) {
  ConfigSource source;
  source.answer = MakeConfig(7, 8);
  ConfigAccessor accessor(kKey, &source);
  const Bytes input = Cat({{0x81}, Key("resetTrianglePeriod"), {0x09}});
  void* out = nullptr;
  size_t size = 0;
  ASSERT_TRUE(accessor.Get(kKey, &out, &size, input.data(), input.size()).ok());
  EXPECT_TRUE(*source.received == MakeConfig(0, 9));
  accessor.Release(kKey, out, size);
}

TEST(AccessorGet, InputDecodingFailureIsReturnedWithATraceBeforeTheHandler) {
  ConfigSource source;
  ConfigAccessor accessor(kKey, &source);
  const Bytes input = {0x81, 0x01, 0x02};
  void* out = nullptr;
  size_t size = 0;
  const weftcore::Status status = accessor.Get(kKey, &out, &size, input.data(), input.size());
  ExpectFailure(status, 8, TypeMismatchMessage(3));
  EXPECT_EQ(status.trace().size(), 1u);
  EXPECT_EQ(source.getCalls, 0);
}

TEST(AccessorGet, HandlerFailureWritesNothingToTheOutParameters) {
  ConfigSource source;
  ConfigAccessor accessor(kKey, &source);
  int sentinel = 0;
  void* out = &sentinel;
  size_t size = 12345;
  const weftcore::Status nullStatus = accessor.Get(kKey, &out, &size, nullptr, 0);
  EXPECT_TRUE(nullStatus.ok());
  accessor.Release(kKey, out, size);

  source.failure = weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument,
                                    "Null pointer")
                       .SetBlock("ZeltoMesh");
  out = &sentinel;
  size = 12345;
  const weftcore::Status status = accessor.Get(kKey, &out, &size, nullptr, 0);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.message(), "Null pointer");
  EXPECT_EQ(status.block(), "ZeltoMesh");
  EXPECT_EQ(status.trace().size(), 1u);
  EXPECT_EQ(out, &sentinel);
  EXPECT_EQ(size, 12345u);
}

TEST(AccessorGet, AnswerIsAnArrayOfExactlyTheEncodedBytes) {
  ConfigSource source;
  source.answer = MakeConfig(2, 4);
  ConfigAccessor accessor(kKey, &source);
  void* out = nullptr;
  size_t size = 0;
  ASSERT_TRUE(accessor.Get(kKey, &out, &size, nullptr, 0).ok());
  ASSERT_NE(out, nullptr);
  const auto* bytes = static_cast<const uint8_t*>(out);
  EXPECT_EQ(Hex(Bytes(bytes, bytes + size)), Hex(ConfigBytes(2, 4)));
  EXPECT_EQ(size, 42u);
  EXPECT_TRUE(accessor.Release(kKey, out, size).ok());
}

TEST(AccessorRelease, NullPointerOrZeroSizeIsSuccessAndFreesNothing) {
  ConfigSource source;
  ConfigAccessor accessor(kKey, &source);
  EXPECT_TRUE(accessor.Release(kKey, nullptr, 10).ok());
  EXPECT_TRUE(accessor.Release(kKey, nullptr, 0).ok());
  uint8_t local = 0;
  EXPECT_TRUE(accessor.Release(kKey, &local, 0).ok());  // not freed: size 0
}

TEST(PropertyAccessor, KeepsItsKey) {
  ConfigSource source;
  ConfigAccessor accessor(kKey, &source);
  EXPECT_EQ(accessor.key(), "kZeltoMeshAlgorithmConfigKey");
}

}  // namespace
