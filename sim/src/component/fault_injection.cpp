#include "component/fault_injection.h"

#include <memory>
#include <stdexcept>

#include "sim_error.h"

namespace ZeltoSim {
namespace {

weftcore::Status Refused(const std::string& what, const std::string& call) {
  return SimError(weftcore::kCauseNotAvailable,
                  what + ": " + call + " refused (fail_" + call + ")");
}

// Answers for the accessor it wraps, except where a knob says otherwise.
class FaultyPropertyAccessor final : public weftcore::PropertyAccessor {
 public:
  FaultyPropertyAccessor(weftcore::PropertyAccessor* inner, const SimFaults& faults)
      : weftcore::PropertyAccessor(inner->key()),
        inner_(inner),
        failGet_(faults.failGet.count(key()) != 0),
        failSet_(faults.failSet.count(key()) != 0),
        throwGet_(faults.throwGet.count(key()) != 0) {}

  weftcore::Status Set(const std::string& key, const void* property, size_t size) override {
    if (failSet_) return Refused(key, "set");
    return inner_->Set(key, property, size);
  }
  weftcore::Status Get(const std::string& key, void** property, size_t* size, const void* input,
                       size_t input_size) override {
    // A device that throws lets a host check that no exception escapes it.
    if (throwGet_) throw std::runtime_error(key + ": get throws (throw_get)");
    if (failGet_) return Refused(key, "get");
    return inner_->Get(key, property, size, input, input_size);
  }
  weftcore::Status Release(const std::string& key, void* property, size_t size) override {
    return inner_->Release(key, property, size);
  }

 private:
  std::unique_ptr<weftcore::PropertyAccessor> inner_;
  bool failGet_;
  bool failSet_;
  bool throwGet_;
};

}  // namespace

weftcore::Status RefusedCall(const std::set<std::string>& refusing, const std::string& sourceType,
                             const std::string& call) {
  if (refusing.count(sourceType) == 0) return weftcore::Status();
  return Refused(sourceType, call);
}

weftcore::PropertyAccessor* WithFaults(weftcore::PropertyAccessor* accessor,
                                       const SimFaults& faults) {
  const std::string& key = accessor->key();
  if (faults.failGet.count(key) == 0 && faults.failSet.count(key) == 0 &&
      faults.throwGet.count(key) == 0) {
    return accessor;
  }
  return new FaultyPropertyAccessor(accessor, faults);
}

}  // namespace ZeltoSim
