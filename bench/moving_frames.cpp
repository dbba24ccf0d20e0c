// The moving frame sequence: the redwood frames and shifted copies of them.
#include "moving_frames.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace ZeltoBench {

ZeltoTest::PointCloudImage Shifted(const ZeltoTest::PointCloudImage& image, int dx, int dy) {
  ZeltoTest::PointCloudImage shifted{image.width, image.height, {}};
  shifted.points.assign(image.points.size(), 0);
  // The columns both frames show: u + dx within the source.
  const int32_t firstU = std::max(0, -dx);
  const int32_t endU = std::min(image.width, image.width - dx);
  for (int32_t v = 0; v < image.height; ++v) {
    const int32_t sourceV = v + dy;
    if (sourceV < 0 || sourceV >= image.height || firstU >= endU) continue;
    const auto from = image.points.begin() + 3 * (int64_t{sourceV} * image.width + firstU + dx);
    std::copy(from, from + 3 * (endU - firstU),
              shifted.points.begin() + 3 * (int64_t{v} * image.width + firstU));
  }
  return shifted;
}

std::vector<ZeltoTest::PointCloudImage> LoadMovingFrames() {
  constexpr int kRedwoodFrames = 5;
  std::vector<ZeltoTest::PointCloudImage> frames;
  for (int index = 0; index < kRedwoodFrames; ++index) {
    frames.push_back(ZeltoTest::LoadRedwoodFrame(index));
  }
  for (const auto& [dx, dy] : {std::pair{16, 8}, std::pair{32, -8}}) {
    for (int index = 0; index < kRedwoodFrames; ++index) {
      frames.push_back(Shifted(frames[static_cast<size_t>(index)], dx, dy));
    }
  }
  return frames;
}

}  // namespace ZeltoBench
