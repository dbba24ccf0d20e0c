#include "component/frame_prefetcher.h"

#include <utility>

#include "weftcore/frame_signal.h"

namespace ZeltoSim {

FramePrefetcher::FramePrefetcher(const SimDevice* device, bool realtime)
    : device_(device),
      realtime_(realtime),
      limit_(device->FrameLimit()),
      start_(Clock::now()),
      thread_([this] { Run(); }) {}

FramePrefetcher::~FramePrefetcher() { Stop(); }

void FramePrefetcher::Stop() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  decoded_.notify_all();
  if (thread_.joinable()) thread_.join();
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

void FramePrefetcher::Run() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!stopping_) {
    Clock::time_point next_due = Clock::time_point::max();
    if (SignalDueFrames(&next_due)) weftcore::SignalFrameReady();
    if (!finished_ && queue_.size() < kDepth) {
      const uint64_t index = nextToRead_++;
      std::vector<int16_t> points;
      if (!spares_.empty()) {
        points = std::move(spares_.back());
        spares_.pop_back();
      }
      lock.unlock();
      weftcore::Status status = device_->ReadFrame(index, &points);
      lock.lock();
      if (status.ok()) {
        queue_.push_back(Decoded{index, std::move(points)});
      } else {
        failure_ = std::move(status);
      }
      finished_ = failure_.IsError() || (limit_ != 0 && nextToRead_ >= limit_);
      // The end of the input is news too: a waiting host asks again and
      // hears it now rather than at its deadline.
      if (finished_ && queue_.empty()) weftcore::SignalFrameReady();
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
  decoded_.wait(lock, [this] { return stopping_ || finished_ || !queue_.empty(); });
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
  wake_.notify_one();
  return Outcome::kFrame;
}

}  // namespace ZeltoSim
