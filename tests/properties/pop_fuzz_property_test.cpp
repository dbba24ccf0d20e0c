// Part 4.1, Pop: arbitrary bytes never crash the decoder; each Pop either
// decodes or fails with cause 8 (bad data) or 11 (no data), and a failure
// leaves the offset where it was.
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <vector>

#include "properties/msgpack_bytes.h"
#include "properties/record_generators.h"
#include "properties/record_types.h"

namespace {

using zelto_test::Bytes;

template <typename T>
void CheckPopOf(const Bytes& bytes) {
  // A non-null pointer even for no bytes, so that the empty case is cause 11.
  const uint8_t empty = 0;
  const uint8_t* data = bytes.empty() ? &empty : bytes.data();
  weftcore::serialize::MsgPackDecoder decoder(data, bytes.size());
  for (int i = 0; i < 3; ++i) {
    const size_t before = decoder.offset();
    T record{};
    const weftcore::Status status = decoder.Pop(record);
    if (status.ok()) {
      RC_ASSERT(decoder.offset() > before);
      RC_ASSERT(decoder.offset() <= bytes.size());
      continue;
    }
    const bool noData = status.cause() == weftcore::kCauseEndOfData;
    RC_ASSERT(noData || status.cause() == weftcore::kCauseSerializer);
    // Cause 11 exactly when nothing is left to read.
    RC_ASSERT(noData == (before >= bytes.size()));
    RC_ASSERT(status.block() == "core");
    RC_ASSERT(decoder.offset() == before);
    return;
  }
}

// Real encodings with a few bytes overwritten and the end cut at random
// reach deeper into the converter than uniform noise does.
template <typename T>
rc::Gen<Bytes> MutatedEncoding() {
  return rc::gen::exec([] {
    Bytes bytes = zelto_test::Encode(*rc::gen::arbitrary<T>());
    const auto edits = *rc::gen::inRange<size_t>(0, 4);
    for (size_t i = 0; i < edits && !bytes.empty(); ++i) {
      const auto at = *rc::gen::inRange<size_t>(0, bytes.size());
      bytes[at] = *rc::gen::arbitrary<uint8_t>();
    }
    const auto keep = *rc::gen::inRange<size_t>(0, bytes.size() + 1);
    bytes.resize(keep);
    return bytes;
  });
}

template <typename T>
class PopFuzz : public ::testing::Test {};
TYPED_TEST_SUITE(PopFuzz, zelto_test::AllRecordTypes, zelto_test::RecordTypeNames);

TYPED_TEST(PopFuzz, ArbitraryBytesEitherDecodeOrFailWithCause8Or11) {
  EXPECT_TRUE(rc::check([](const Bytes& bytes) { CheckPopOf<TypeParam>(bytes); }));
}

TYPED_TEST(PopFuzz, MutatedEncodingsEitherDecodeOrFailWithCause8Or11) {
  EXPECT_TRUE(rc::check([] { CheckPopOf<TypeParam>(*MutatedEncoding<TypeParam>()); }));
}

}  // namespace
