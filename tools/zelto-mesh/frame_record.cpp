// StatsLine: one frame's record as a single JSON object, keys in a fixed order.
#include "frame_record.h"

#include <cmath>

#include "json_msgpack.h"

namespace zelto_cli {

std::string StatsLine(const FrameRecord& record) {
  Json line = Json::object();
  line["frame"] = record.index;
  line["sequenceNumber"] = record.sequenceNumber;
  line["capturedTimestamp"] = record.capturedTimestamp;
  line["vertexCount"] = record.vertexCount;
  line["triangleCount"] = record.triangleCount;
  line["resetTriangle"] = record.resetTriangle;
  line["layout"] = LayoutName(record.layout);
  line["bytes"] = record.bytes;
  // Microsecond resolution is all a wall clock measure deserves.
  line["buildMs"] = std::round(record.buildMs * 1000) / 1000;
  return line.dump();
}

}  // namespace zelto_cli
