// LoadRecording: the directory layout of recording.h, validated up front so
// that playback never meets a malformed file it could have reported.
#include "zelto_sim/recording.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "directory_listing.h"
#include "json_file.h"
#include "recording_metadata.h"
#include "sim_error.h"
#include "recording_color.h"
#include "timestamp_lists.h"
#include "zelto_sim/png_io.h"

namespace ZeltoSim {
namespace {

weftcore::Status CheckDepthSize(const std::string& path, const PngInfo& info,
                                const Recording& recording) {
  const Intrinsics& intrinsics = recording.intrinsics;
  if (info.width != static_cast<uint32_t>(intrinsics.width) ||
      info.height != static_cast<uint32_t>(intrinsics.height)) {
    const std::string camera = std::filesystem::path(recording.cameraFile).filename().string();
    return Invalid(path + ": " + SizeText(info.width, info.height) + " pixels, " + camera +
                   " says " + SizeText(intrinsics.width, intrinsics.height));
  }
  return weftcore::Status();
}

weftcore::Status CheckDepthPng(const std::string& path, const Recording& recording) {
  PngInfo info;
  weftcore::Status status = ReadPngInfo(path, &info);
  if (status.ok()) status = CheckPngChunks(path);
  if (status.IsError()) return status;
  if (info.bitDepth != 16 || info.colorType != 0) {
    return Invalid(path + ": " + DescribePngFormat(info) + " PNG, expected 16-bit grayscale");
  }
  return CheckDepthSize(path, info, recording);
}

uint64_t PointCloudBytes(const Intrinsics& intrinsics) {
  return static_cast<uint64_t>(intrinsics.width) * static_cast<uint64_t>(intrinsics.height) * 6;
}

weftcore::Status CheckPointCloudFile(const std::string& path, const Intrinsics& intrinsics) {
  const long long size = FileSize(path);
  if (size < 0) return SimError(weftcore::kCauseNotFound, path + ": cannot read its size");
  const uint64_t expected = PointCloudBytes(intrinsics);
  if (static_cast<uint64_t>(size) != expected) {
    return Invalid(path + ": " + std::to_string(size) + " bytes, expected " +
                   std::to_string(expected) + " (" + SizeText(intrinsics.width, intrinsics.height) +
                   " x 6)");
  }
  return weftcore::Status();
}

weftcore::Status LoadFrames(const std::string& directory, Recording* recording) {
  const std::vector<std::string> depth = ListFiles(directory + "/depth", ".png");
  const std::vector<std::string> clouds = ListFiles(directory + "/pointcloud", ".bin");
  if (!depth.empty() && !clouds.empty()) {
    return Invalid(directory + ": both depth/ and pointcloud/ hold frames; keep one");
  }
  if (depth.empty() && clouds.empty()) {
    return SimError(weftcore::kCauseNotFound,
                    directory + ": no frames (expected depth/*.png or pointcloud/*.bin)");
  }
  recording->format = depth.empty() ? FrameFormat::kPointCloud : FrameFormat::kDepthPng;
  recording->frameFiles = depth.empty() ? clouds : depth;
  return weftcore::Status();
}

weftcore::Status CheckFrames(const Recording* recording) {
  for (const std::string& path : recording->frameFiles) {
    weftcore::Status status = recording->format == FrameFormat::kDepthPng
                                  ? CheckDepthPng(path, *recording)
                                  : CheckPointCloudFile(path, recording->intrinsics);
    if (status.IsError()) return status;
  }
  return weftcore::Status();
}

weftcore::Status LoadMaskTrack(const std::string& trackDirectory, const std::string& name,
                               size_t frameCount, MaskTrack* track) {
  track->name = name;
  const std::string jsonPath = trackDirectory + "/mask.json";
  if (!IsRegularFile(jsonPath)) return SimError(weftcore::kCauseNotFound, jsonPath + ": missing");
  nlohmann::json object;
  weftcore::Status status = ReadJsonObject(jsonPath, &object);
  std::string source;
  if (status.ok()) status = ReadJsonString(object, {jsonPath, ""}, "source", true, &source);
  if (status.IsError()) return status;
  if (source != "color" && source != "depth") {
    return Invalid(jsonPath + ": \"source\" must be \"color\" or \"depth\", not \"" + source +
                   "\"");
  }
  track->isColorSource = source == "color";
  track->files = ListFiles(trackDirectory, ".png");
  if (track->files.size() != frameCount) {
    return Invalid(trackDirectory + ": " + std::to_string(track->files.size()) +
                   " mask images for " + std::to_string(frameCount) + " frames");
  }
  for (size_t i = 0; i < track->files.size(); ++i) {
    PngInfo info;
    status = ReadPngInfo(track->files[i], &info);
    if (status.IsError()) return status;
    if (info.bitDepth != 8 || info.colorType != 0) {
      return Invalid(track->files[i] + ": " + DescribePngFormat(info) +
                     " PNG, expected 8-bit grayscale");
    }
    if (i == 0) {
      track->width = info.width;
      track->height = info.height;
    } else if (info.width != track->width || info.height != track->height) {
      return Invalid(track->files[i] + ": " + SizeText(info.width, info.height) +
                     " pixels, the first mask of the track is " +
                     SizeText(track->width, track->height));
    }
  }
  return weftcore::Status();
}

weftcore::Status LoadMasks(const std::string& directory, Recording* recording) {
  const std::string masks = directory + "/masks";
  for (const std::string& name : ListSubdirectories(masks)) {
    MaskTrack track;
    weftcore::Status status =
        LoadMaskTrack(masks + "/" + name, name, recording->frameFiles.size(), &track);
    if (status.IsError()) return status;
    recording->masks.push_back(std::move(track));
  }
  return weftcore::Status();
}

// The camera JSON under either name; both at once would be ambiguous.
weftcore::Status FindIntrinsicsFile(const std::string& directory, std::string* path) {
  const std::string main = directory + "/intrinsics.json", other = directory + "/camera.json";
  const bool hasMain = IsRegularFile(main), hasOther = IsRegularFile(other);
  if (hasMain && hasOther) {
    return Invalid(other + ": intrinsics.json describes the camera too; keep one");
  }
  if (hasMain || hasOther) {
    *path = hasMain ? main : other;
    return weftcore::Status();
  }
  const bool lists = IsRegularFile(directory + "/depth.txt");
  return SimError(weftcore::kCauseNotFound,
                  main + ": missing" +
                      (lists ? " (depth.txt lists carry no camera: write its width, height and "
                               "intrinsic_matrix or fx, fy, cx, cy here)"
                             : ""));
}

weftcore::Status LoadTimestamps(const std::string& directory, Recording* recording) {
  if (!recording->timestamps.empty()) return weftcore::Status();  // from depth.txt
  const std::string path = directory + "/timestamps.txt";
  const size_t count = recording->frameFiles.size();
  if (IsRegularFile(path)) return ParseTimestampsFile(path, count, &recording->timestamps);
  recording->timestamps.resize(count);
  for (size_t i = 0; i < count; ++i) recording->timestamps[i] = i * kFramePeriodNs;
  return weftcore::Status();
}

weftcore::Status LoadCalibration(const std::string& directory, Recording* recording) {
  recording->calibration = IdentityCalibration(recording->intrinsics);
  const std::string path = directory + "/calibration.json";
  recording->hasCalibrationFile = IsRegularFile(path);
  if (!recording->hasCalibrationFile) return weftcore::Status();
  return ParseCalibrationFile(path, &recording->calibration);
}

// Little-endian int16 samples regardless of the host's byte order.
weftcore::Status ReadPointCloudFile(const std::string& path, const Intrinsics& intrinsics,
                                    std::vector<int16_t>* points) {
  weftcore::Status status = CheckPointCloudFile(path, intrinsics);
  if (status.IsError()) return status;
  std::vector<unsigned char> bytes(PointCloudBytes(intrinsics));
  std::ifstream file(path, std::ios::binary);
  if (!file.read(reinterpret_cast<char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()))) {
    return SimError(weftcore::kCauseNotFound, path + ": cannot read");
  }
  points->resize(bytes.size() / 2);
  for (size_t i = 0; i < points->size(); ++i) {
    (*points)[i] =
        static_cast<int16_t>(static_cast<uint16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8)));
  }
  return weftcore::Status();
}

// Points outside near .. far (compared in the point's own millimetres) become
// (0, 0, 0), the point the mesh source treats as not measured.
void ClipDepth(const Intrinsics& intrinsics, std::vector<int16_t>* points) {
  if (intrinsics.near <= 0 && intrinsics.far <= 0) return;
  const double near = intrinsics.near * 1000.0;
  const double far = intrinsics.far > 0 ? intrinsics.far * 1000.0 : 32767.0;
  for (size_t i = 0; i + 2 < points->size(); i += 3) {
    const int16_t z = (*points)[i + 2];
    if (z < near || z > far) std::fill_n(points->begin() + static_cast<std::ptrdiff_t>(i), 3, 0);
  }
}

}  // namespace

weftcore::Status LoadRecording(const std::string& directory, Recording* recording) {
  *recording = Recording();
  recording->directory = directory;
  if (!IsDirectory(directory)) {
    return SimError(weftcore::kCauseNotFound, directory + ": not a directory");
  }
  const bool lists = IsRegularFile(directory + "/depth.txt");
  weftcore::Status status = FindIntrinsicsFile(directory, &recording->cameraFile);
  if (lists) recording->intrinsics.depthScale = kListLayoutDepthScale;
  if (status.ok()) {
    status = ParseIntrinsicsFile(recording->cameraFile, &recording->intrinsics,
                                 &recording->warnings);
  }
  if (status.ok()) {
    status = lists ? LoadTimestampLists(directory, recording) : LoadFrames(directory, recording);
  }
  if (status.ok()) status = CheckFrames(recording);
  if (status.ok() && !lists) status = ListColorFiles(directory, recording);
  if (status.ok()) status = LoadTimestamps(directory, recording);
  if (status.ok()) status = LoadCalibration(directory, recording);
  if (status.ok()) status = CheckColorFiles(recording);
  if (status.ok()) status = LoadMasks(directory, recording);
  return status;
}

weftcore::Status ReadPointCloudFrame(const Recording& recording, size_t index,
                                     std::vector<int16_t>* points) {
  if (index >= recording.frameFiles.size()) {
    return Invalid(recording.directory + ": no frame " + std::to_string(index) + " (" +
                   std::to_string(recording.frameFiles.size()) + " frames)");
  }
  const std::string& path = recording.frameFiles[index];
  const Intrinsics& intrinsics = recording.intrinsics;
  weftcore::Status status;
  if (recording.format == FrameFormat::kPointCloud) {
    status = ReadPointCloudFile(path, intrinsics, points);
  } else {
    PngInfo info;
    std::vector<uint16_t> depth;
    status = ReadGray16Png(path, &info, &depth);
    if (status.ok()) status = CheckDepthSize(path, info, recording);
    if (status.IsError()) return status;
    points->resize(depth.size() * 3);
    DepthImageToPointCloud(depth.data(), intrinsics, points->data());
  }
  if (status.ok()) ClipDepth(intrinsics, points);
  return status;
}

weftcore::Status ReadMaskFrame(const MaskTrack& track, size_t index, std::vector<uint8_t>* bytes) {
  if (index >= track.files.size()) {
    return Invalid("mask \"" + track.name + "\": no image " + std::to_string(index) + " (" +
                   std::to_string(track.files.size()) + " images)");
  }
  PngInfo info;
  weftcore::Status status = ReadGray8Png(track.files[index], &info, bytes);
  if (status.ok() && (info.width != track.width || info.height != track.height)) {
    status =
        Invalid(track.files[index] + ": " + SizeText(info.width, info.height) +
                " pixels, the first mask of the track is " + SizeText(track.width, track.height));
  }
  return status;
}

}  // namespace ZeltoSim
