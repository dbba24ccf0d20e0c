// An upstream stream that answers the calibration read with an encoded
// record, as "zelto_tof_camera2_stream" does (Parts 3.1, 4.3).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "properties/zelto_tof_properties.h"
#include "weftcore/serialize.h"
#include "weftcore/status.h"
#include "weftcore/stream.h"
#include "weftcore/stream_function_lock.h"

namespace masking_test {

class CalibrationStream : public weftcore::Stream {
 public:
  explicit CalibrationStream(const ZeltoTof::ZeltoTofCalibrationSettingsProperty_& reply)
      : reply_(reply) {}

  // When set, the read fails before any reply is handed out.
  bool failReads = false;
  int reads = 0;
  int releases = 0;
  std::string lastKey;

  weftcore::Status Start() override { return {}; }
  weftcore::Status Stop() override { return {}; }
  weftcore::Status GetFrame(weftcore::Frame** frame, int32_t) override {
    *frame = nullptr;
    return {};
  }
  weftcore::Status ReleaseFrame(weftcore::Frame*) override { return {}; }

  weftcore::Status GetSerializedProperty(const std::string& key, const void*, size_t,
                                         void** property, size_t* size) override {
    ++reads;
    lastKey = key;
    if (failReads) {
      return weftcore::Status(weftcore::kLevelError, weftcore::kCauseNotFound, "no %s",
                              key.c_str());
    }
    weftcore::serialize::SerializedBuffer buffer;
    weftcore::Status status = weftcore::serialize::MsgPackEncoder(&buffer).Push(reply_);
    if (status.IsError()) return status;
    auto* copy = new unsigned char[buffer.size()];
    std::memcpy(copy, buffer.data(), buffer.size());
    *property = copy;
    *size = buffer.size();
    return {};
  }
  weftcore::Status ReleaseSerializedProperty(const std::string&, void* property,
                                             size_t) override {
    ++releases;
    delete[] static_cast<unsigned char*>(property);
    return {};
  }
  weftcore::Status SetSerializedProperty(const std::string&, const void*, size_t) override {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseNotAvailable,
                            "not available to set");
  }
  weftcore::StreamFunctionLockManager* GetFunctionLockManager() override { return &locks_; }

 private:
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ reply_;
  weftcore::StreamFunctionLockManager locks_;
};

}  // namespace masking_test
