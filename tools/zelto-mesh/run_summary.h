// The few lines printed at the end of a run.
#pragma once

#include <string>
#include <vector>

#include "frame_record.h"
#include "frame_writer.h"

namespace zelto_cli {

struct SummaryInput {
  std::string source;  // "the synthetic scene" or the recording directory
  std::vector<FrameRecord> frames;
  // Wall time of the frame loop: from the first frame request to the last
  // frame written, releases and statistics included.
  double loopSeconds = 0;
  FrameOutput output;
  int64_t bytesWritten = 0;  // by the frame files
  std::string preview;
  std::string stats;
};

// Median of the build times; 0 without frames.
double MedianBuildMs(const std::vector<FrameRecord>& frames);

// For example:
//   60 frames from the synthetic scene, flat layout
//     vertices per frame   307200
//     triangles per frame  612162
//     median GetFrame      4.1 ms per frame, writing not included
//     frame rate           212.3 frames per second
//     meshes               out/frame_000000.ply ... out/frame_000059.ply
//     written              112.4 MB
//     preview              out/preview.png
//     statistics           out/stats.jsonl
std::string SummaryText(const SummaryInput& input);

}  // namespace zelto_cli
