// The per-stream function locks: one recursive mutex per kind of function,
// and a shutdown flag that refuses new callers while a stream closes.
#include "weftcore/stream_function_lock.h"

namespace weftcore {

Status StreamFunctionLockManager::Lock(StreamFunctionType type) {
  if (shut_down_.load()) {
    return Status(kLevelError, kCauseInvalidState, "stream is closed").SetBlock("core");
  }
  mutexes_[static_cast<size_t>(type)].lock();
  return Status();
}

void StreamFunctionLockManager::Unlock(StreamFunctionType type) {
  mutexes_[static_cast<size_t>(type)].unlock();
}

void StreamFunctionLockManager::Shutdown() { shut_down_.store(true); }

StreamFunctionLock::StreamFunctionLock(StreamFunctionLockManager* manager,
                                       StreamFunctionType type)
    : manager_(manager), type_(type) {
  if (manager_ == nullptr) {
    status_ = Status(kLevelError, kCauseInvalidArgument, "Null pointer").SetBlock("core");
    return;
  }
  status_ = manager_->Lock(type_);
  locked_ = status_.ok();
}

StreamFunctionLock::~StreamFunctionLock() {
  if (locked_) manager_->Unlock(type_);
}

}  // namespace weftcore
