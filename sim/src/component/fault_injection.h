// The failure knobs of SimFaults at work: a source call that refuses, and a
// property whose read or write fails or throws. A failure names the knob
// that caused it, so whoever reads it in a host's log knows it was asked for.
#pragma once

#include <memory>
#include <string>

#include "weftcore/property_accessor.h"
#include "weftcore/stream_source_utility.h"
#include "zelto_sim/sim_options.h"

namespace ZeltoSim {

// OK, unless `faults` lists `sourceType` for `call` ("open", "start", "stop"
// or "close"): then cause 10, "<type>: <call> refused (fail_<call>)".
weftcore::Status RefusedCall(const SimFaults& faults, const std::string& sourceType,
                             const std::string& call);

// Registers the property `key` of `source`, behind the knobs that name it.
template <typename T, typename Source>
weftcore::Status ServeProperty(weftcore::StreamSourceUtility* util, const std::string& key,
                               Source* source, const SimFaults& faults);

// Answers for `inner` except where a knob says otherwise.
class FaultyPropertyAccessor final : public weftcore::PropertyAccessor {
 public:
  FaultyPropertyAccessor(std::unique_ptr<weftcore::PropertyAccessor> inner,
                         const SimFaults& faults);

  weftcore::Status Set(const std::string& key, const void* serialized_property,
                       size_t serialized_size) override;
  weftcore::Status Get(const std::string& key, void** serialized_property,
                       size_t* serialized_size, const void* serialized_input_property,
                       size_t serialized_input_size) override;
  weftcore::Status Release(const std::string& key, void* serialized_property,
                           size_t serialized_size) override;

 private:
  std::unique_ptr<weftcore::PropertyAccessor> inner_;
  bool failGet_;
  bool failSet_;
  bool throwGet_;
};

template <typename T, typename Source>
weftcore::Status ServeProperty(weftcore::StreamSourceUtility* util, const std::string& key,
                               Source* source, const SimFaults& faults) {
  if (faults.failGet.count(key) == 0 && faults.failSet.count(key) == 0 &&
      faults.throwGet.count(key) == 0) {
    return util->CreateProperty<T, Source>(key, source);
  }
  auto accessor = std::make_unique<FaultyPropertyAccessor>(
      std::make_unique<weftcore::DeserializedPropertyAccessor<Source, T>>(key, source), faults);
  weftcore::Status status = util->RegisterProperty(accessor.get());
  if (status.ok()) {
    accessor.release();  // the utility owns it now
  } else {
    status.AddTrace(nullptr, 0);
  }
  return status;
}

}  // namespace ZeltoSim
