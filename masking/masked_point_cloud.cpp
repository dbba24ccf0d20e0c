// MaskedPointCloud::Apply: blanks, in place, every point of a point cloud
// that a segmentation mask selects, by giving it the invalid depth the mesh
// builder already leaves out. Every mask is checked and fitted before the
// first point is touched, so a bad mask list leaves the frame as it came.
#include "masking/masked_point_cloud.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>
#include <vector>

#include "logging/zelto_logger.h"
#include "masking/lanes.h"
#include "masking/mask_fit.h"
#include "masking/point_mapping.h"
#include "mesh/invalid_depth.h"

// Every module of the component holds its own logger (see zelto_logger.h).
[[maybe_unused]] static ZeltoLogger logger;

namespace {

constexpr char kBlock[] = "ZeltoMesh";
constexpr size_t kPointBytes = 6;
constexpr size_t kDepthOffset = 4;  // z follows x and y

// One entry of the per-call working table: the fit of pass 1 and the fields
// of the mask record that pass 2 reads.
struct MaskPlan {
  const uint8_t* bytes;
  uint64_t size;
  uint32_t width;
  bool isColorSource;
  Zelto::IntLanes invertLanes;  // -1 in every lane for an inverted mask
  Zelto::MaskFit fit;
};

weftcore::Status NullStatus(const char* message) {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument, "%s", message)
      .SetBlock(kBlock);
}

// No exception may cross into the host, so exhausted memory for the working
// table becomes a status; the caller logs it and the frame goes on unmasked.
weftcore::Status OutOfMemoryStatus(size_t maskCount, const char* what) {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseOutOfMemory,
                          "Out of memory for %zu masks: %s", maskCount, what)
      .SetBlock(kBlock);
}

bool IsInvalid(const ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_& mask) {
  return mask.maskDataAddress == 0 || mask.maskDataSize == 0 || mask.maskDataWidth == 0;
}

weftcore::Status InvalidMaskStatus(const ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_& m) {
  // Log readers of the segmentation components parse this exact line, so it
  // stays byte for byte as they know it, quirk included: the format has one
  // conversion fewer than its labels, so the number after "timestamp:" is
  // the height and the timestamp is never printed. Each argument is
  // converted to exactly the type its conversion reads (the low 32 bits of
  // the address for %x), so nothing undefined reaches printf on LP64, and
  // the timestamp is not passed at all.
  return weftcore::Status(
             weftcore::kLevelError, weftcore::kCauseInvalidArgument,
             "Invalid mask data mask name:%s address:%x size:%lu width:%u height timestamp:%ld",
             m.name.c_str(), static_cast<unsigned int>(m.maskDataAddress & 0xFFFFFFFFu),
             static_cast<unsigned long>(m.maskDataSize), m.maskDataWidth,
             static_cast<long>(m.maskDataHeight))
      .SetBlock(kBlock);
}

// Four points of the cloud as lanes.
struct PointLanes {
  Zelto::FloatLanes x, y, z;
};

constexpr size_t kBlockBytes = Zelto::kLaneCount * kPointBytes;

// The 32 bits at `offset` of each of the four points, copied out: the
// upstream buffer carries no alignment guarantee.
Zelto::IntLanes LoadWords(const unsigned char* block, size_t offset) {
  int32_t words[Zelto::kLaneCount];
  for (size_t lane = 0; lane < Zelto::kLaneCount; ++lane) {
    std::memcpy(&words[lane], block + lane * kPointBytes + offset, sizeof words[lane]);
  }
  return Zelto::IntLanes{words[0], words[1], words[2], words[3]};
}

// The block of four points at `block`, of which `count` are in the cloud;
// lanes past them hold the point (0, 0, 0). Each point is read as two
// overlapping 32-bit words, (x, y) and (y, z), and the 16-bit halves are
// sign-extended by shifts, in the byte order of the device and of x86-64.
PointLanes LoadPoints(const unsigned char* block, size_t count) {
  static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "x precedes y in a word's low half");
  unsigned char copy[kBlockBytes] = {};
  if (count < Zelto::kLaneCount) {
    std::memcpy(copy, block, count * kPointBytes);
    block = copy;
  }
  const Zelto::IntLanes xy = LoadWords(block, 0);
  const Zelto::IntLanes yz = LoadWords(block, 2);
  const auto low = [](Zelto::IntLanes word) {
    return Zelto::IntLanes(Zelto::UintLanes(word) << 16) >> 16;
  };
  return {Zelto::ToFloat(low(xy)), Zelto::ToFloat(low(yz)), Zelto::ToFloat(yz >> 16)};
}

// A run of points, mapped once and then taken mask by mask: each mask is a
// short loop whose blocks do not wait for one another, so the processor
// overlaps the divisions and byte reads of many points.
constexpr size_t kBatchBlocks = 16;
constexpr size_t kBatchPoints = kBatchBlocks * Zelto::kLaneCount;

struct PointBatch {
  size_t points = 0;
  size_t blocks = 0;
  Zelto::Pixels<Zelto::FloatLanes> color[kBatchBlocks] = {};
  Zelto::Pixels<Zelto::FloatLanes> depth[kBatchBlocks] = {};
  Zelto::IntLanes selected[kBatchBlocks] = {};  // -1 in the lanes a mask has selected
};

// Selects the points of `batch` whose byte of `plan` says so.
// The height only sets the scale: the byte count is what bounds a read, so a
// row past the height whose byte still lies in the mask's memory is read.
// The index is computed in 32 bits and wraps around; the wrapped index is
// still checked against the byte count, so even a mask of more than 4 GiB
// is never read outside its memory.
void Consult(const MaskPlan& plan, uint8_t threshold, PointBatch* batch) {
  const Zelto::Pixels<Zelto::FloatLanes>* at = plan.isColorSource ? batch->color : batch->depth;
  const uint8_t* bytes = plan.bytes;
  const float scale = plan.fit.scale, offsetX = plan.fit.offsetX, offsetY = plan.fit.offsetY;
  const uint32_t width = plan.width;
  // As unsigned, a negative column or index is 2^31 or more, so one test
  // bounds each on both sides.
  const uint32_t columnLimit = std::min(width, uint32_t{1} << 31);
  const uint32_t indexLimit =
      static_cast<uint32_t>(std::min<uint64_t>(plan.size, uint64_t{1} << 31));
  const Zelto::IntLanes invert = plan.invertLanes;
  for (size_t b = 0; b < batch->blocks; ++b) {
    const Zelto::IntLanes col = Zelto::TruncateToInt32(at[b].u * scale - offsetX);
    const Zelto::IntLanes row = Zelto::TruncateToInt32(at[b].v * scale - offsetY);
    const Zelto::UintLanes index = Zelto::UintLanes(col) + width * Zelto::UintLanes(row);
    const Zelto::IntLanes onMask =
        (Zelto::UintLanes(col) < columnLimit) & (row >= 0) & (index < indexLimit);
    // Masks combine by OR: a point one mask has selected takes no verdict
    // from the later ones. Every lane reads a byte, without a branch that
    // noisy depth would mispredict; a lane that may not consult this mask
    // reads byte 0, which every valid mask has, and ignores it.
    const Zelto::IntLanes consults = onMask & ~batch->selected[b];
    const Zelto::UintLanes read = index & Zelto::UintLanes(consults);
    const Zelto::IntLanes byte = {bytes[read[0]], bytes[read[1]], bytes[read[2]], bytes[read[3]]};
    const Zelto::IntLanes inside = byte > static_cast<int32_t>(threshold);
    batch->selected[b] |= (inside ^ invert) & consults;
  }
}

// Gives the selected points of `batch`, which starts at `first`, the
// invalid depth the mesh builder leaves out.
void BlankSelected(const PointBatch& batch, unsigned char* first) {
  for (size_t point = 0; point < batch.points; point += Zelto::kLaneCount) {
    const unsigned selected = Zelto::LaneBits(batch.selected[point / Zelto::kLaneCount]);
    for (size_t lane = 0; selected >> lane != 0 && point + lane < batch.points; ++lane) {
      if ((selected >> lane & 1u) == 0) continue;
      constexpr int16_t invalid = ZeltoMesh::kInvalidDepth;
      std::memcpy(first + (point + lane) * kPointBytes + kDepthOffset, &invalid, sizeof invalid);
    }
  }
}

}  // namespace

namespace Zelto {

MaskFit FitMaskToReference(uint32_t maskWidth, uint32_t maskHeight, float refWidth,
                           float refHeight) {
  const float width = static_cast<float>(maskWidth);
  const float height = static_cast<float>(maskHeight);
  const float sx = width / refWidth;
  const float sy = height / refHeight;
  MaskFit fit;
  if (sx <= sy) {
    fit.scale = sy;
    fit.offsetX = (sy * refWidth - width) * 0.5f;
  } else {
    fit.scale = sx;
    fit.offsetY = (sx * refHeight - height) * 0.5f;
  }
  return fit;
}

}  // namespace Zelto

weftcore::Status MaskedPointCloud::Apply(
    weftcore::Channel::RawData* raw,
    const ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_* list) {
  if (raw == nullptr) return NullStatus("point cloud is null.");
  if (list == nullptr) return NullStatus("Null pointer");
  // Pass 1: validate every mask and fit it before any point is touched.
  std::vector<MaskPlan> plans;
  try {
    plans.reserve(list->data.size());
  } catch (const std::bad_alloc& e) {
    return OutOfMemoryStatus(list->data.size(), e.what());
  } catch (const std::length_error& e) {
    return OutOfMemoryStatus(list->data.size(), e.what());
  }
  const float colorWidth = static_cast<float>(calibration.colorWidth);
  const float colorHeight = static_cast<float>(calibration.colorHeight);
  const float depthWidth = static_cast<float>(calibration.depthWidth);
  const float depthHeight = static_cast<float>(calibration.depthHeight);
  bool anyColor = false;
  bool anyDepth = false;
  for (const auto& mask : list->data) {
    if (IsInvalid(mask)) return InvalidMaskStatus(mask);
    const float refWidth = mask.isColorSource ? colorWidth : depthWidth;
    const float refHeight = mask.isColorSource ? colorHeight : depthHeight;
    plans.push_back(
        {reinterpret_cast<const uint8_t*>(static_cast<uintptr_t>(mask.maskDataAddress)),
         mask.maskDataSize, mask.maskDataWidth, mask.isColorSource,
         Zelto::Splat<Zelto::IntLanes>(mask.isInvertMask ? -1 : 0),
         Zelto::FitMaskToReference(mask.maskDataWidth, mask.maskDataHeight, refWidth, refHeight)});
    anyColor = anyColor || mask.isColorSource;
    anyDepth = anyDepth || !mask.isColorSource;
  }

  // Pass 2: no allocation from here on, so the cost per point stays flat
  // while the frame thread holds the mask mutex. The count is a signed
  // 32-bit number.
  const int32_t count = static_cast<int32_t>(static_cast<uint32_t>(raw->size / kPointBytes));
  if (count < 1 || plans.empty()) return weftcore::Status();
  auto* points = static_cast<unsigned char*>(raw->address);
  if (points == nullptr) return NullStatus("point cloud is null.");
  const size_t pointCount = static_cast<size_t>(count);
  const Zelto::ColorLens<Zelto::FloatLanes> colorLens =
      Zelto::MakeColorLens<Zelto::FloatLanes>(calibration, inverseRotation);
  const Zelto::DepthLens<Zelto::FloatLanes> depthLens =
      Zelto::MakeDepthLens<Zelto::FloatLanes>(calibration);
  PointBatch batch;
  for (size_t first = 0; first < pointCount; first += kBatchPoints) {
    unsigned char* batchPoints = points + first * kPointBytes;
    batch.points = std::min(kBatchPoints, pointCount - first);
    batch.blocks = (batch.points + Zelto::kLaneCount - 1) / Zelto::kLaneCount;
    for (size_t b = 0; b < batch.blocks; ++b) {
      const size_t lanes =
          std::min<size_t>(Zelto::kLaneCount, batch.points - b * Zelto::kLaneCount);
      const PointLanes p = LoadPoints(batchPoints + b * kBlockBytes, lanes);
      if (anyColor) batch.color[b] = Zelto::MapToColor(colorLens, p.x, p.y, p.z);
      if (anyDepth) batch.depth[b] = Zelto::MapToDepth(depthLens, p.x, p.y, p.z);
      batch.selected[b] = Zelto::IntLanes{};
    }
    for (const MaskPlan& plan : plans) Consult(plan, maskThreshold, &batch);
    BlankSelected(batch, batchPoints);
  }
  return weftcore::Status();
}
