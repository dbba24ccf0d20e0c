// What the run keeps of each delivered frame: a line of --stats and a row
// of the summary.
#pragma once

#include <cstdint>
#include <string>

#include "mesh.h"

namespace zelto_cli {

struct FrameRecord {
  int64_t index = 0;  // 0-based, names the output file
  uint64_t sequenceNumber = 0;
  uint64_t capturedTimestamp = 0;
  int64_t vertexCount = 0;
  int64_t triangleCount = 0;
  bool resetTriangle = false;
  MeshLayout layout = MeshLayout::kFlat;
  uint64_t bytes = 0;  // size of channel 0
  double buildMs = 0;  // wall time of the GetFrame call that delivered it
};

// One JSON object, no newline:
// {"frame":0,"sequenceNumber":1,"capturedTimestamp":...,"vertexCount":...,
//  "triangleCount":...,"resetTriangle":false,"layout":"flat","bytes":...,"buildMs":1.234}
std::string StatsLine(const FrameRecord& record);

}  // namespace zelto_cli
