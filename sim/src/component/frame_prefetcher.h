// Decoding ahead of the requests: a depth stream's frames are read (PNG
// decoding and point conversion, or the synthetic scene's rendering) by
// threads of the device's own into a short queue, so that a frame request
// only takes a frame that is already there. Two threads read alternate
// frames, since one frame takes longer to decode than the mesh component
// takes to mesh it; frames still come out in order. The threads start with
// the prefetcher (at the stream's Start) and are joined by Stop or the
// destructor; at most kDepth frames are queued or being read, so memory
// stays bounded however slowly the frames are taken.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "component/sim_device.h"
#include "weftcore/status.h"

namespace ZeltoSim {

class FramePrefetcher {
 public:
  static constexpr size_t kDepth = 4;
  static constexpr size_t kThreads = 2;

  enum class Outcome {
    kFrame,   // the next frame, in order
    kNotDue,  // realtime: the next frame's time has not come yet
    kFailed,  // the next frame could not be read; told once, then kEnded
    kEnded,   // no frame follows: the input ended, a frame failed, or Stop
  };

  // Starts decoding frame 0 of `device`'s input at once. `realtime` holds
  // each frame back until its timestamp, counted from frame 0, has passed
  // since now. Throws std::system_error when a thread cannot be started.
  FramePrefetcher(const SimDevice* device, bool realtime);
  ~FramePrefetcher();  // Stop
  FramePrefetcher(const FramePrefetcher&) = delete;
  FramePrefetcher& operator=(const FramePrefetcher&) = delete;

  // The next frame into `points` (whose old buffer the decoder reuses) and
  // its index. Waits only while that frame is being decoded. On kFailed,
  // `failure` says why, naming the file.
  Outcome Next(std::vector<int16_t>* points, uint64_t* index, weftcore::Status* failure);

  // Ends decoding and joins the threads; a Next waiting in another thread
  // returns kEnded. Idempotent.
  void Stop();

 private:
  struct Decoded {
    uint64_t index = 0;
    std::vector<int16_t> points;
  };
  using Clock = std::chrono::steady_clock;

  void Run();
  weftcore::Status ReadFrame(uint64_t index, std::vector<int16_t>* points) const;
  Clock::time_point DueTime(uint64_t index) const;
  // Signals the queued frames that have become due; the earliest one that
  // has not, if any, in `next_due`.
  bool SignalDueFrames(Clock::time_point* next_due);
  // True when no frame will follow the queued ones.
  bool Ended() const;

  const SimDevice* device_;  // outlives every stream, and so this
  const bool realtime_;
  const uint64_t limit_;  // frames to read; 0 = endless
  const Clock::time_point start_;

  std::mutex mutex_;  // guards everything below
  std::condition_variable decoded_;  // the consumer waits for a frame or the end
  std::condition_variable wake_;     // the threads wait for room, a due time or Stop
  std::deque<Decoded> queue_;        // read, in order, not yet taken
  std::map<uint64_t, std::vector<int16_t>> early_;  // read before an earlier frame
  std::vector<std::vector<int16_t>> spares_;  // buffers handed back by the consumer
  size_t reading_ = 0;      // frames being read now
  uint64_t nextToRead_ = 0;
  uint64_t nextToQueue_ = 0;
  uint64_t signalled_ = 0;  // frames below this index have been signalled
  uint64_t failedAt_ = UINT64_MAX;  // the first frame that could not be read
  weftcore::Status failure_;
  bool failureTold_ = false;
  bool stopping_ = false;
  std::vector<std::thread> threads_;  // last: they start once the members above exist
};

}  // namespace ZeltoSim
