// The per-stream function lock: the functions of one stream run one at a
// time per kind (control, frames, properties), so a client's property call
// never races another on the same stream while frames keep flowing. A thread
// may re-enter a lock it holds, because a handler may call back into its own
// stream.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>

#include "weftcore/export.h"
#include "weftcore/status.h"

namespace weftcore {

enum class StreamFunctionType : int32_t {
  kControl = 0,   // Start, Stop
  kFrame = 1,     // GetFrame, ReleaseFrame
  kProperty = 2,  // serialized property operations
};

class WEFTCORE_API StreamFunctionLockManager {
 public:
  StreamFunctionLockManager() = default;
  StreamFunctionLockManager(const StreamFunctionLockManager&) = delete;
  StreamFunctionLockManager& operator=(const StreamFunctionLockManager&) = delete;

  // Fails once the stream has been shut down.
  Status Lock(StreamFunctionType type);
  void Unlock(StreamFunctionType type);
  // Later Lock calls fail; calls holding a lock finish normally.
  void Shutdown();

 private:
  std::array<std::recursive_mutex, 3> mutexes_;
  std::atomic<bool> shut_down_{false};
};

class WEFTCORE_API StreamFunctionLock {
 public:
  StreamFunctionLock(StreamFunctionLockManager* manager, StreamFunctionType type);
  ~StreamFunctionLock();
  StreamFunctionLock(const StreamFunctionLock&) = delete;
  StreamFunctionLock& operator=(const StreamFunctionLock&) = delete;

  const Status& GetStatus() const { return status_; }

 private:
  StreamFunctionLockManager* manager_;
  StreamFunctionType type_;
  Status status_;
  bool locked_ = false;
};

}  // namespace weftcore
