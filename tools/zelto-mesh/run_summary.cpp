// MedianBuildMs and SummaryText: the lines printed after a run.
#include "run_summary.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace zelto_cli {
namespace {

// "307200", or "1200..307200" when frames differ.
template <typename Field>
std::string CountRange(const std::vector<FrameRecord>& frames, Field field) {
  const auto [low, high] = std::minmax_element(
      frames.begin(), frames.end(),
      [&](const FrameRecord& a, const FrameRecord& b) { return a.*field < b.*field; });
  const std::string first = std::to_string((*low).*field);
  return (*low).*field == (*high).*field ? first : first + ".." + std::to_string((*high).*field);
}

std::string Row(const char* label, const std::string& value) {
  char head[32];
  std::snprintf(head, sizeof head, "  %-20s ", label);
  return head + value + "\n";
}

// Frames delivered and written per second of the loop; 0 without time.
double FramesPerSecond(const SummaryInput& input) {
  if (!(input.loopSeconds > 0)) return 0;
  return static_cast<double>(input.frames.size()) / input.loopSeconds;
}

}  // namespace

double MedianBuildMs(const std::vector<FrameRecord>& frames) {
  if (frames.empty()) return 0;
  std::vector<double> times;
  for (const FrameRecord& frame : frames) times.push_back(frame.buildMs);
  std::sort(times.begin(), times.end());
  const size_t middle = times.size() / 2;
  return times.size() % 2 == 1 ? times[middle] : (times[middle - 1] + times[middle]) / 2;
}

std::string SummaryText(const SummaryInput& input) {
  const auto& frames = input.frames;
  std::set<std::string> layouts;
  for (const FrameRecord& frame : frames) layouts.insert(LayoutName(frame.layout));
  std::string layout_text;
  for (const std::string& layout : layouts) {
    layout_text += (layout_text.empty() ? ", " : " and ") + layout;
  }
  std::string text = std::to_string(frames.size()) + (frames.size() == 1 ? " frame" : " frames") +
                     " from " + input.source + layout_text + (layouts.empty() ? "" : " layout") +
                     "\n";
  if (!frames.empty()) {
    text += Row("vertices per frame", CountRange(frames, &FrameRecord::vertexCount));
    text += Row("triangles per frame", CountRange(frames, &FrameRecord::triangleCount));
    char median[64];
    std::snprintf(median, sizeof median, "%.1f ms per frame, writing not included",
                  MedianBuildMs(frames));
    text += Row("median GetFrame", median);
    char rate[48];
    std::snprintf(rate, sizeof rate, "%.1f frames per second", FramesPerSecond(input));
    text += Row("frame rate", rate);
  }
  if (input.output.format != OutputFormat::kNone && !frames.empty()) {
    const std::string first =
        input.output.directory + "/" + FrameFileName(input.output.format, frames.front().index);
    const std::string last =
        input.output.directory + "/" + FrameFileName(input.output.format, frames.back().index);
    text += Row("meshes", frames.size() == 1 ? first : first + " ... " + last);
    char megabytes[32];
    std::snprintf(megabytes, sizeof megabytes, "%.1f MB",
                  static_cast<double>(input.bytesWritten) / 1e6);
    text += Row("written", megabytes);
  }
  if (!input.preview.empty()) text += Row("preview", input.preview);
  if (!input.stats.empty()) text += Row("statistics", input.stats);
  return text;
}

}  // namespace zelto_cli
