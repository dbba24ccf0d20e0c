// Checks for decoder failures (Part 4.1, Pop): level 1, the cause, the exact
// message and block "core".
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "weftcore/status.h"

namespace zelto_test {

inline void ExpectFailure(const weftcore::Status& status, int cause, const std::string& message) {
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), cause);
  EXPECT_EQ(status.message(), message);
  EXPECT_EQ(status.block(), "core");
}

// The type mismatch report of the msgpack library for a whole object of
// `size` bytes at offset 0 with nothing after it.
inline std::string TypeMismatchMessage(size_t size) {
  return "what=std::bad_cast, buffer_size=" + std::to_string(size) +
         ", offset=0, current=" + std::to_string(size) + "(0x00)";
}

}  // namespace zelto_test
