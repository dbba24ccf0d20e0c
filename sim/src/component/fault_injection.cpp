#include "component/fault_injection.h"

#include <stdexcept>
#include <utility>

#include "sim_error.h"

namespace ZeltoSim {
namespace {

weftcore::Status Refused(const std::string& what, const std::string& call) {
  return SimError(weftcore::kCauseNotAvailable,
                  what + ": " + call + " refused (fail_" + call + ")");
}

}  // namespace

weftcore::Status RefusedCall(const SimFaults& faults, const std::string& sourceType,
                             const std::string& call) {
  const std::set<std::string>* list = call == "open"    ? &faults.failOpen
                                      : call == "start" ? &faults.failStart
                                      : call == "stop"  ? &faults.failStop
                                                        : &faults.failClose;
  if (list->count(sourceType) == 0) return weftcore::Status();
  return Refused(sourceType, call);
}

FaultyPropertyAccessor::FaultyPropertyAccessor(std::unique_ptr<weftcore::PropertyAccessor> inner,
                                               const SimFaults& faults)
    : weftcore::PropertyAccessor(inner->key()),
      inner_(std::move(inner)),
      failGet_(faults.failGet.count(key()) != 0),
      failSet_(faults.failSet.count(key()) != 0),
      throwGet_(faults.throwGet.count(key()) != 0) {}

weftcore::Status FaultyPropertyAccessor::Set(const std::string& key,
                                             const void* serialized_property,
                                             size_t serialized_size) {
  if (failSet_) return Refused(key, "set");
  return inner_->Set(key, serialized_property, serialized_size);
}

weftcore::Status FaultyPropertyAccessor::Get(const std::string& key, void** serialized_property,
                                             size_t* serialized_size,
                                             const void* serialized_input_property,
                                             size_t serialized_input_size) {
  // A device that throws lets a host check that no exception escapes it.
  if (throwGet_) throw std::runtime_error(key + ": get throws (throw_get)");
  if (failGet_) return Refused(key, "get");
  return inner_->Get(key, serialized_property, serialized_size, serialized_input_property,
                     serialized_input_size);
}

weftcore::Status FaultyPropertyAccessor::Release(const std::string& key,
                                                 void* serialized_property,
                                                 size_t serialized_size) {
  return inner_->Release(key, serialized_property, serialized_size);
}

}  // namespace ZeltoSim
