// ZeltoSim::LoadRecording over a recording directory written from the input:
// a list of files, each a name byte (an index into the layout below), a
// 16-bit little-endian length and the content. Any directory gets a status;
// an accepted one has one timestamp per frame and one mask file per frame in
// every mask track.
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/require.h"
#include "zelto_sim/recording.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kFiles[] = {
    "intrinsics.json",        "calibration.json",       "timestamps.txt",
    "depth/00000.png",        "depth/00001.png",        "pointcloud/00000.bin",
    "pointcloud/00001.bin",   "masks/person/mask.json", "masks/person/00000.png",
    "masks/person/00001.png", "masks/floor/mask.json",  "masks/floor/00000.png"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fs::path directory =
      fs::temp_directory_path() / ("zelto_recording_fuzzer_" + std::to_string(getpid()));
  fs::remove_all(directory);
  for (size_t at = 0; at + 3 <= size;) {
    const fs::path file = directory / kFiles[data[at] % std::size(kFiles)];
    const size_t length = std::min<size_t>(data[at + 1] | data[at + 2] << 8, size - at - 3);
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(data + at + 3), static_cast<std::streamsize>(length));
    at += 3 + length;
  }
  ZeltoSim::Recording recording;
  if (ZeltoSim::LoadRecording(directory.string(), &recording).ok()) {
    Require(!recording.frameFiles.empty());
    Require(recording.timestamps.size() == recording.frameFiles.size());
    for (const ZeltoSim::MaskTrack& track : recording.masks) {
      Require(track.files.size() == recording.frameFiles.size());
    }
  }
  return 0;
}
