// Part 4.1: every record, whatever its values, decodes back from its own
// encoding to an equal record, over a fresh record and over one holding
// other values (every declared key is written, so none survives).
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "properties/msgpack_bytes.h"
#include "properties/record_generators.h"
#include "properties/record_types.h"

namespace {

using zelto_test::Bytes;

template <typename T>
void CheckRoundTrip(const T& record, const T& other) {
  const Bytes bytes = zelto_test::Encode(record);
  T fresh{};
  weftcore::serialize::MsgPackDecoder decoder(bytes.data(), bytes.size());
  RC_ASSERT(decoder.Pop(fresh).ok());
  RC_ASSERT(fresh == record);
  RC_ASSERT(decoder.offset() == bytes.size());
  T overwritten = other;
  RC_ASSERT(zelto_test::Decode(bytes, overwritten).ok());
  RC_ASSERT(overwritten == record);
}

template <typename T>
class RecordRoundTrip : public ::testing::Test {};
TYPED_TEST_SUITE(RecordRoundTrip, zelto_test::AllRecordTypes, zelto_test::RecordTypeNames);

TYPED_TEST(RecordRoundTrip, AnyRecordDecodesBackFromItsEncoding) {
  EXPECT_TRUE(rc::check([](const TypeParam& record, const TypeParam& other) {
    CheckRoundTrip(record, other);
  }));
}

}  // namespace
