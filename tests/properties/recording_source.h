// A small stream source for the accessor tests (Part 4.1): typed Get and Set
// handlers for one record type that record what they were given. Like the
// mesh source, a null record is Status(1, 2, "property is null.") in block
// "ZeltoMesh".
#pragma once

#include <optional>
#include <string>

#include "weftcore/status.h"

namespace zelto_test {

template <typename T>
class RecordingSource {
 public:
  weftcore::Status Get(const std::string& key, T* property) {
    ++getCalls;
    lastKey = key;
    if (property == nullptr) return NullRecord();
    received = *property;
    if (failure.IsError()) return failure;
    *property = answer;
    return weftcore::Status();
  }

  weftcore::Status Set(const std::string& key, const T* property) {
    ++setCalls;
    lastKey = key;
    if (property == nullptr) {
      received.reset();
      return NullRecord();
    }
    received = *property;
    return failure;
  }

  int getCalls = 0;
  int setCalls = 0;
  std::string lastKey;
  std::optional<T> received;   // the record the last handler call saw
  T answer{};                  // what Get writes
  weftcore::Status failure;    // returned by Get and Set when it is an error

 private:
  static weftcore::Status NullRecord() {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument,
                            "property is null.")
        .SetBlock("ZeltoMesh");
  }
};

}  // namespace zelto_test
