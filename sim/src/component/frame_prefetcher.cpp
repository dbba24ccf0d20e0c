// FramePrefetcher: the device's decoding threads and the queue that hands
// their frames out in order.
#include "component/frame_prefetcher.h"

#include <new>
#include <utility>

#include "weftcore/frame_signal.h"

namespace ZeltoSim {

FramePrefetcher::FramePrefetcher(const SimDevice* device, bool realtime)
    : device_(device),
      realtime_(realtime),
      limit_(device->FrameLimit()),
      start_(Clock::now()) {
  try {
    for (size_t i = 0; i < kThreads; ++i) threads_.emplace_back([this] { Run(); });
  } catch (...) {
    Stop();  // the threads already running, else their destructors would terminate
    throw;
  }
}

FramePrefetcher::~FramePrefetcher() { Stop(); }

void FramePrefetcher::Stop() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  decoded_.notify_all();
  for (std::thread& thread : threads_) {
    if (thread.joinable()) thread.join();
  }
}

FramePrefetcher::Clock::time_point FramePrefetcher::DueTime(uint64_t index) const {
  if (!realtime_) return Clock::time_point::min();
  const uint64_t first = device_->FrameTimestamp(0);
  const uint64_t stamp = device_->FrameTimestamp(index);
  return start_ + std::chrono::nanoseconds(stamp > first ? stamp - first : 0);
}

bool FramePrefetcher::SignalDueFrames(Clock::time_point* next_due) {
  const Clock::time_point now = Clock::now();
  bool signal = false;
  for (const Decoded& frame : queue_) {
    if (frame.index < signalled_) continue;
    const Clock::time_point due = DueTime(frame.index);
    if (due > now) {
      *next_due = due;
      break;
    }
    signalled_ = frame.index + 1;
    signal = true;
  }
  return signal;
}

bool FramePrefetcher::Ended() const {
  return nextToQueue_ == failedAt_ || (limit_ != 0 && nextToQueue_ >= limit_);
}

// A thread of the device must not end the process: a frame it cannot
// allocate for fails like a frame it cannot read.
weftcore::Status FramePrefetcher::ReadFrame(uint64_t index, std::vector<int16_t>* points) const {
  try {
    return device_->ReadFrame(index, points);
  } catch (const std::bad_alloc&) {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseOutOfMemory,
                            "frame %llu: out of memory", static_cast<unsigned long long>(index))
        .SetBlock(kStatusBlock);
  }
}

void FramePrefetcher::Run() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!stopping_) {
    Clock::time_point next_due = Clock::time_point::max();
    if (SignalDueFrames(&next_due)) weftcore::SignalFrameReady();
    const bool more = failedAt_ == UINT64_MAX && (limit_ == 0 || nextToRead_ < limit_);
    if (more && queue_.size() + early_.size() + reading_ < kDepth) {
      const uint64_t index = nextToRead_++;
      ++reading_;
      std::vector<int16_t> points;
      if (!spares_.empty()) {
        points = std::move(spares_.back());
        spares_.pop_back();
      }
      lock.unlock();
      weftcore::Status status = ReadFrame(index, &points);
      lock.lock();
      --reading_;
      if (status.ok()) {
        early_.emplace(index, std::move(points));
      } else if (index < failedAt_) {
        failedAt_ = index;
        failure_ = std::move(status);
      }
      // Frames leave in order, and none from the first failed one on.
      for (auto next = early_.begin(); next != early_.end() && next->first == nextToQueue_ &&
                                       nextToQueue_ < failedAt_;
           next = early_.erase(next)) {
        queue_.push_back(Decoded{nextToQueue_++, std::move(next->second)});
      }
      // The end of the input is news too: a waiting host asks again and
      // hears it now rather than at its deadline.
      if (Ended() && queue_.empty()) weftcore::SignalFrameReady();
      decoded_.notify_all();
      continue;
    }
    if (next_due == Clock::time_point::max()) {
      wake_.wait(lock);
    } else {
      wake_.wait_until(lock, next_due);
    }
  }
}

FramePrefetcher::Outcome FramePrefetcher::Next(std::vector<int16_t>* points, uint64_t* index,
                                               weftcore::Status* failure) {
  std::unique_lock<std::mutex> lock(mutex_);
  decoded_.wait(lock, [this] { return stopping_ || Ended() || !queue_.empty(); });
  if (stopping_) return Outcome::kEnded;
  if (queue_.empty()) {
    if (failure_.ok() || failureTold_) return Outcome::kEnded;
    failureTold_ = true;
    *failure = failure_;
    return Outcome::kFailed;
  }
  Decoded& head = queue_.front();
  if (DueTime(head.index) > Clock::now()) return Outcome::kNotDue;
  *index = head.index;
  points->swap(head.points);
  if (spares_.size() < kDepth) spares_.push_back(std::move(head.points));
  queue_.pop_front();
  lock.unlock();
  wake_.notify_all();
  return Outcome::kFrame;
}

}  // namespace ZeltoSim
