// Hostile client bytes never crash the decoder: golden encodings of every
// record type with bytes overwritten, cut short or extended, and plain noise.
// The sanitizer builds watch memory; the checks are the decoder's promises.
#include <gtest/gtest.h>

#include <random>

#include "properties/golden_records.h"

namespace zelto_test {
namespace {

TEST(DecoderFuzz, DamagedBytesDecodeOrFailCleanly) {
  std::mt19937 random(20261123);
  const auto below = [&random](size_t end) {
    return std::uniform_int_distribution<size_t>(0, end)(random);
  };
  for (const GoldenRow& row : GoldenRows()) {
    SCOPED_TRACE(row.name);
    for (int i = 0; i < 1000; ++i) {
      Bytes bytes = i % 4 == 3 ? Bytes(below(64)) : row.bytes;
      for (size_t edits = below(3); edits-- > 0 && !bytes.empty();) {
        bytes[below(bytes.size() - 1)] = static_cast<uint8_t>(below(255));
      }
      if (i % 4 == 3) {
        for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(below(255));
      } else if (i % 4 == 1) {
        bytes.resize(below(bytes.size()));
      } else if (i % 4 == 2) {
        bytes.push_back(static_cast<uint8_t>(below(255)));
      }
      const Decoded decoded = row.decode(bytes);
      if (decoded.status.ok()) {  // what was accepted is a record: its encoding decodes to itself
        EXPECT_TRUE(decoded.offset > 0 && decoded.offset <= bytes.size()) << Hex(bytes);
        EXPECT_TRUE(row.decode(decoded.reencoded).reencoded == decoded.reencoded) << Hex(bytes);
        continue;
      }
      EXPECT_EQ(decoded.status.cause(), bytes.empty() ? 11 : 8) << Hex(bytes);
      EXPECT_EQ(decoded.offset, 0u);
    }
  }
}

}  // namespace
}  // namespace zelto_test
