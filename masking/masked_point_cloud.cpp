// MaskedPointCloud::Apply: blanks, in place, every point of a point cloud
// that a segmentation mask selects, by giving it the invalid depth the mesh
// builder already leaves out. Every mask is checked and fitted before the
// first point is touched, so a bad mask list leaves the frame as it came.
#include "masking/masked_point_cloud.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

#include "logging/zelto_logger.h"
#include "masking/mask_fit.h"
#include "masking/zelto_vector3.h"
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
  bool isInvertMask;
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

// The mask byte that (u, v) falls on, or null when it falls off the mask.
// The height only sets the scale: the byte count is what bounds a read, so a
// row past the height whose byte still lies in the mask's memory is read.
// The index is computed in 32 bits and wraps around; the wrapped index is
// still checked against the byte count, so even a mask of more than 4 GiB
// is never read outside its memory.
const uint8_t* MaskByte(const MaskPlan& plan, std::pair<float, float> position) {
  const int32_t col = Zelto::TruncateToInt32(position.first * plan.fit.scale - plan.fit.offsetX);
  const int32_t row = Zelto::TruncateToInt32(position.second * plan.fit.scale - plan.fit.offsetY);
  const uint32_t wrapped = static_cast<uint32_t>(col) + plan.width * static_cast<uint32_t>(row);
  const int32_t index = static_cast<int32_t>(wrapped);
  if (index < 0 || static_cast<uint64_t>(index) >= plan.size || col < 0 || row < 0 ||
      static_cast<uint32_t>(col) >= plan.width) {
    return nullptr;
  }
  return plan.bytes + index;
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
    plans.push_back({reinterpret_cast<const uint8_t*>(static_cast<uintptr_t>(mask.maskDataAddress)),
                     mask.maskDataSize, mask.maskDataWidth, mask.isColorSource, mask.isInvertMask,
                     Zelto::FitMaskToReference(mask.maskDataWidth, mask.maskDataHeight, refWidth,
                                               refHeight)});
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
  for (int32_t i = 0; i < count; ++i) {
    unsigned char* point = points + static_cast<size_t>(i) * kPointBytes;
    // memcpy: the upstream buffer carries no alignment guarantee.
    int16_t xyz[3];
    std::memcpy(xyz, point, sizeof xyz);
    const Zelto::ZeltoVector3_ p{static_cast<float>(xyz[0]), static_cast<float>(xyz[1]),
                                 static_cast<float>(xyz[2])};
    const std::pair<float, float> color = anyColor ? CameraToColor(p) : std::pair<float, float>{};
    const std::pair<float, float> depth = anyDepth ? CameraToDepth(p) : std::pair<float, float>{};
    for (const MaskPlan& plan : plans) {
      const uint8_t* byte = MaskByte(plan, plan.isColorSource ? color : depth);
      if (byte == nullptr) continue;
      const bool inside = *byte > maskThreshold;
      if (inside != plan.isInvertMask) {
        constexpr int16_t invalid = ZeltoMesh::kInvalidDepth;
        std::memcpy(point + kDepthOffset, &invalid, sizeof invalid);
        break;  // masks combine by OR: later masks are not consulted
      }
    }
  }
  return weftcore::Status();
}
