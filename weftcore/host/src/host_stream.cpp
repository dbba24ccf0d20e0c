// HostStream: one source behind the Stream interface, each function under
// the stream's function lock, frames tracked from delivery to release so that
// closing the stream hands every one of them back to the source.
#include "weftcore/host/host_stream.h"

#include <chrono>
#include <utility>

#include "weftcore/frame_signal.h"

namespace weftcore {
namespace host {
namespace {

Status Traced(Status status) {
  if (status.IsError()) status.AddTrace(nullptr, 0);
  return status;
}

Status NullArgument(const char* name) {
  return Status(kLevelError, kCauseInvalidArgument, "%s is null", name).SetBlock("core");
}

// The three serialized property operations share their locking and look-up:
// `call` runs on the accessor registered under `key`, under the property lock.
template <typename Call>
Status WithAccessor(StreamFunctionLockManager* locks, const HostStreamUtility& utility,
                    const std::string& key, Call call) {
  StreamFunctionLock lock(locks, StreamFunctionType::kProperty);
  if (lock.GetStatus().IsError()) return Traced(lock.GetStatus());
  PropertyAccessor* accessor = utility.FindProperty(key);
  if (accessor == nullptr) {
    return Status(kLevelError, kCauseNotFound, "property %s is not registered", key.c_str())
        .SetBlock("core");
  }
  return Traced(call(*accessor));
}

}  // namespace

HostStream::HostStream(std::string key, StreamSourceFactory* factory, StreamSource* source,
                       MemoryAllocator* allocator)
    : key_(std::move(key)), factory_(factory), source_(source), utility_(allocator) {}

HostStream::~HostStream() { Shutdown(); }

Status HostStream::Start() {
  StreamFunctionLock lock(&lock_manager_, StreamFunctionType::kControl);
  if (lock.GetStatus().IsError()) return Traced(lock.GetStatus());
  return Traced(source_->Start());
}

Status HostStream::Stop() {
  StreamFunctionLock lock(&lock_manager_, StreamFunctionType::kControl);
  if (lock.GetStatus().IsError()) return Traced(lock.GetStatus());
  return Traced(source_->Stop());
}

Status HostStream::GetFrame(Frame** frame, int32_t timeout_msec) {
  if (frame == nullptr) return NullArgument("frame");
  *frame = nullptr;
  if (timeout_msec < 0) {
    return Status(kLevelError, kCauseInvalidArgument, "timeout_msec is negative: %d",
                  timeout_msec)
        .SetBlock("core");
  }
  StreamFunctionLock lock(&lock_manager_, StreamFunctionType::kFrame);
  if (lock.GetStatus().IsError()) return Traced(lock.GetStatus());

  // Queued frames go first; the source is asked only when none is left. The
  // source runs without frames_mutex_ held: it may call back into the host.
  const auto take_queued = [this, frame]() {
    std::lock_guard<std::mutex> frames_lock(frames_mutex_);
    if (pending_.empty()) return false;
    auto host_frame = std::make_unique<HostFrame>(std::move(pending_.front()));
    pending_.pop_front();
    *frame = host_frame.get();
    handed_out_.emplace(host_frame.get(), std::move(host_frame));
    return true;
  };
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_msec);
  for (;;) {
    // Read before asking, so that a frame signalled while the source answers
    // "nothing yet" still ends the wait below.
    const uint64_t signals = FrameSignalCount();
    if (take_queued()) return Status();
    std::vector<FrameInfo> delivered;
    source_->GetFrames(&delivered);
    {
      std::lock_guard<std::mutex> frames_lock(frames_mutex_);
      for (FrameInfo& info : delivered) pending_.push_back(std::move(info));
    }
    if (take_queued()) return Status();
    if (timeout_msec == 0 || std::chrono::steady_clock::now() >= deadline) return Status();
    // Sleeps until a device signals a frame or the time is up; not
    // osal::OSSleep, whose hook is there to see the source's own pacing.
    WaitForFrameSignal(signals, deadline);
  }
}

Status HostStream::ReleaseFrame(Frame* frame) {
  if (frame == nullptr) return NullArgument("frame");
  StreamFunctionLock lock(&lock_manager_, StreamFunctionType::kFrame);
  if (lock.GetStatus().IsError()) return Traced(lock.GetStatus());
  std::unique_ptr<HostFrame> released;
  {
    std::lock_guard<std::mutex> frames_lock(frames_mutex_);
    const auto found = handed_out_.find(frame);
    if (found == handed_out_.end()) {
      return Status(kLevelError, kCauseNotFound, "frame is not outstanding on stream %s",
                    key_.c_str())
          .SetBlock("core");
    }
    released = std::move(found->second);
    handed_out_.erase(found);
  }
  return Traced(source_->ReleaseFrame(released->info(), nullptr));
}

Status HostStream::GetSerializedProperty(const std::string& key, const void* input,
                                         size_t input_size, void** property, size_t* size) {
  return WithAccessor(&lock_manager_, utility_, key, [&](PropertyAccessor& accessor) {
    return accessor.Get(key, property, size, input, input_size);
  });
}

Status HostStream::ReleaseSerializedProperty(const std::string& key, void* property,
                                             size_t size) {
  return WithAccessor(&lock_manager_, utility_, key, [&](PropertyAccessor& accessor) {
    return accessor.Release(key, property, size);
  });
}

Status HostStream::SetSerializedProperty(const std::string& key, const void* property,
                                         size_t size) {
  return WithAccessor(&lock_manager_, utility_, key, [&](PropertyAccessor& accessor) {
    return accessor.Set(key, property, size);
  });
}

StreamFunctionLockManager* HostStream::GetFunctionLockManager() { return &lock_manager_; }

void HostStream::ReleaseAllFrames() {
  std::vector<FrameInfo> frames;
  {
    std::lock_guard<std::mutex> lock(frames_mutex_);
    for (auto& entry : handed_out_) frames.push_back(entry.second->info());
    handed_out_.clear();
    for (FrameInfo& info : pending_) frames.push_back(std::move(info));
    pending_.clear();
  }
  // The stream is going away; a refusal of the source changes nothing here.
  for (const FrameInfo& info : frames) (void)source_->ReleaseFrame(info, nullptr);
}

Status HostStream::Shutdown() {
  {
    std::lock_guard<std::mutex> lock(frames_mutex_);
    if (shut_down_) return Status();
    shut_down_ = true;
  }
  lock_manager_.Shutdown();
  if (source_ == nullptr) return Status();
  ReleaseAllFrames();
  Status status = source_->Close();
  if (factory_ != nullptr) {
    factory_->ReleaseSource(source_);
  }
  source_ = nullptr;
  return Traced(std::move(status));
}

}  // namespace host
}  // namespace weftcore
