// The golden table of the property records (wire_format_test.cpp): every
// record type and every integer, float, string and container form, as the
// exact bytes clients exchange. The decoder fuzz test starts from these bytes.
#pragma once

#include <functional>
#include <string>

#include "support/bytes.h"

namespace zelto_test {

struct Decoded {
  weftcore::Status status;
  size_t offset;
  Bytes reencoded;  // the decoded record encoded again; empty on failure
};

struct GoldenRow {
  std::string name;
  Bytes bytes;
  std::function<Bytes()> encode;                // the row's record
  std::function<Decoded(const Bytes&)> decode;  // into a fresh record of its type
};

const std::vector<GoldenRow>& GoldenRows();

}  // namespace zelto_test
