// The failure knobs of SimFaults at work: a source call that refuses, and a
// property whose read or write fails or throws. A failure names the knob
// that caused it, so whoever reads it in a host's log knows it was asked for.
#pragma once

#include <set>
#include <string>

#include "weftcore/property_accessor.h"
#include "weftcore/stream_source_utility.h"
#include "zelto_sim/sim_options.h"

namespace ZeltoSim {

// OK, unless `refusing` (a knob such as failOpen) lists `sourceType`: then
// cause 10, "<type>: <call> refused (fail_<call>)".
weftcore::Status RefusedCall(const std::set<std::string>& refusing, const std::string& sourceType,
                             const std::string& call);

// `accessor`, behind the knobs that name its key; takes ownership.
weftcore::PropertyAccessor* WithFaults(weftcore::PropertyAccessor* accessor,
                                       const SimFaults& faults);

// Registers the property `key` of `source`, behind the knobs that name it.
template <typename T, typename Source>
weftcore::Status ServeProperty(weftcore::StreamSourceUtility* util, const std::string& key,
                               Source* source, const SimFaults& faults) {
  weftcore::PropertyAccessor* accessor =
      WithFaults(new weftcore::DeserializedPropertyAccessor<Source, T>(key, source), faults);
  weftcore::Status status = util->RegisterProperty(accessor);
  if (status.IsError()) {
    delete accessor;
    status.AddTrace(nullptr, 0);
  }
  return status;
}

}  // namespace ZeltoSim
