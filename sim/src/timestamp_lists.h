// The timestamp-list layout: depth.txt and rgb.txt name the images of a
// recording with the time each was taken.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "weftcore/status.h"
#include "zelto_sim/recording.h"

namespace ZeltoSim {

struct TimedFile {
  uint64_t nanoseconds = 0;
  std::string path;  // the directory joined with the listed name
};

// "seconds name" lines in file order; blank lines and lines starting with '#'
// are skipped. Errors name the list and the line.
weftcore::Status ParseTimestampList(const std::string& path, const std::string& directory,
                                    std::vector<TimedFile>* entries);

// For each time of `frames`, the index into `images` of the entry nearest in
// time (the earlier one on a tie), or images.size() when none is within
// `tolerance` nanoseconds.
std::vector<size_t> MatchNearest(const std::vector<uint64_t>& frames,
                                 const std::vector<TimedFile>& images, uint64_t tolerance);

// depth.txt gives the frames (depth PNGs) and their times, rgb.txt (optional)
// the colour images to pick from, the nearest within kColorMatchNs; frames
// left without one get "" and a warning. Refuses timestamps.txt and
// pointcloud/ beside depth.txt, which would contradict it.
weftcore::Status LoadTimestampLists(const std::string& directory, Recording* recording);

}  // namespace ZeltoSim
