// An in-process component for the host tests. Every call the host makes on
// the factory and its sources is written to one event log, and what a source
// does depends on the source type the stream asks for:
//   "recording"     plain source; frames as the recorder's knobs say
//   "failing"       Open fails with Status(1, 3, "open refused")
//   "mesh_like"     Open calls Initialize and opens "upstream"; Close closes
//                   it and calls Finalize (the mesh source's pattern)
//   "self_opening"  Open opens its own stream key "loop" and fails with that
//   "null"          listed, but CreateSource yields no source
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "weftcore/weftcore.h"

namespace weftcore_test {

constexpr char kRecordingComponent[] = "recording";
constexpr char kTestRawDataType[] = "kRawDataTypeTest";

// Channel 0 of every delivered frame: 8 bytes at offset 4 of a 16-byte block,
// filled with the sequence number; channel 7 carries no memory.
constexpr uint64_t kBlockSize = 16;
constexpr uint64_t kDataOffset = 4;
constexpr uint64_t kDataSize = 8;
constexpr uint64_t kTimestampBase = 1000;

struct Recorder {
  // Knobs, set by a test before it opens a stream.
  int deliver_from_request = 1;  // first GetFrames call (1-based) that yields frames
  int frames_per_request = 1;
  weftcore::FrameRateProperty frame_rate{30, 1};

  // Observations.
  weftcore::ComponentArgument last_args;
  int get_frames_calls = 0;

  void Record(const std::string& event);
  std::vector<std::string> Events() const;
  int Count(const std::string& event) const;
  void Reset();

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> events_;
};

Recorder& TheRecorder();

weftcore::StandardComponent* CreateRecordingComponent();
void DestroyRecordingComponent(weftcore::StandardComponent* component);

}  // namespace weftcore_test
