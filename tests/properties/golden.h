// The golden-bytes check shared by every record: the encoding equals the
// hand-written bytes, and those bytes decode back to an equal record.
#pragma once

#include <gtest/gtest.h>

#include "properties/msgpack_bytes.h"
#include "properties/record_equality.h"

namespace zelto_test {

template <typename T>
void ExpectGolden(const T& record, const Bytes& expected) {
  EXPECT_EQ(Hex(Encode(record)), Hex(expected));
  T decoded{};
  weftcore::serialize::MsgPackDecoder decoder(expected.data(), expected.size());
  const weftcore::Status status = decoder.Pop(decoded);
  ASSERT_TRUE(status.ok()) << status.message();
  EXPECT_TRUE(decoded == record);
  EXPECT_EQ(decoder.offset(), expected.size());
}

}  // namespace zelto_test
