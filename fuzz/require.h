// A harness's check: a broken promise aborts, and libFuzzer keeps the input.
#pragma once

#include <cstdlib>

inline void Require(bool holds) {
  if (!holds) std::abort();
}
