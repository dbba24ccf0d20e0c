#include "timestamp_lists.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "recording_metadata.h"
#include "sim_error.h"

namespace ZeltoSim {

weftcore::Status ParseTimestampList(const std::string& path, const std::string& directory,
                                    std::vector<TimedFile>* entries) {
  std::ifstream file(path);
  if (!file) {
    return SimError(weftcore::kCauseNotFound, path + ": cannot open: " + std::strerror(errno));
  }
  entries->clear();
  std::string line;
  for (size_t number = 1; std::getline(file, line); ++number) {
    std::istringstream fields(line);
    std::string time, name, extra;
    if (!(fields >> time) || time[0] == '#') continue;
    TimedFile entry;
    if (!(fields >> name) || (fields >> extra) || !ParseTimestamp(time, true, &entry.nanoseconds)) {
      return SimError(weftcore::kCauseInvalidArgument,
                      path + ": line " + std::to_string(number) +
                          ": expected \"seconds file\", e.g. \"1305031102.160407 depth/1.png\"");
    }
    entry.path = directory + "/" + name;
    entries->push_back(std::move(entry));
  }
  return weftcore::Status();
}

std::vector<size_t> MatchNearest(const std::vector<uint64_t>& frames,
                                 const std::vector<TimedFile>& images, uint64_t tolerance) {
  std::vector<size_t> matches(frames.size(), images.size());
  for (size_t f = 0; f < frames.size(); ++f) {
    uint64_t best = tolerance;
    for (size_t i = 0; i < images.size(); ++i) {
      const uint64_t a = frames[f], b = images[i].nanoseconds;
      const uint64_t gap = a > b ? a - b : b - a;
      if (gap < best || (gap == best && matches[f] == images.size())) {
        best = gap;
        matches[f] = i;
      }
    }
  }
  return matches;
}

}  // namespace ZeltoSim
