#include "timestamp_lists.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "directory_listing.h"
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

weftcore::Status LoadTimestampLists(const std::string& directory, Recording* recording) {
  for (const char* clash : {"/timestamps.txt", "/pointcloud"}) {
    if (IsRegularFile(directory + clash) || IsDirectory(directory + clash)) {
      return Invalid(directory + clash + ": not used beside depth.txt, which lists the frames "
                                         "and their times; remove one");
    }
  }
  std::vector<TimedFile> depth;
  weftcore::Status status = ParseTimestampList(directory + "/depth.txt", directory, &depth);
  if (status.ok() && depth.empty()) status = Invalid(directory + "/depth.txt: lists no frames");
  if (status.IsError()) return status;
  for (const TimedFile& entry : depth) {
    recording->frameFiles.push_back(entry.path);
    recording->timestamps.push_back(entry.nanoseconds);
  }
  const std::string rgbList = directory + "/rgb.txt";
  if (!IsRegularFile(rgbList)) return weftcore::Status();
  std::vector<TimedFile> rgb;
  status = ParseTimestampList(rgbList, directory, &rgb);
  if (status.IsError()) return status;
  size_t unmatched = 0;
  for (const size_t match : MatchNearest(recording->timestamps, rgb, kColorMatchNs)) {
    recording->colorFiles.push_back(match < rgb.size() ? rgb[match].path : std::string());
    unmatched += match == rgb.size();
  }
  if (unmatched > 0) {
    recording->warnings.push_back(rgbList + ": no colour image within " +
                                  std::to_string(kColorMatchNs / 1000000) + " ms of " +
                                  std::to_string(unmatched) + " of " +
                                  std::to_string(depth.size()) + " depth frames");
  }
  return weftcore::Status();
}

}  // namespace ZeltoSim
