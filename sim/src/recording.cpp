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
#include "timestamp_lists.h"
#include "zelto_sim/color_image.h"
#include "zelto_sim/png_io.h"

namespace ZeltoSim {
namespace {

std::string SizeText(uint32_t width, uint32_t height) {
  return std::to_string(width) + " x " + std::to_string(height);
}

weftcore::Status Invalid(const std::string& message) {
  return SimError(weftcore::kCauseInvalidArgument, message);
}

weftcore::Status CheckDepthSize(const std::string& path, const PngInfo& info,
                                const Intrinsics& intrinsics) {
  if (info.width != static_cast<uint32_t>(intrinsics.width) ||
      info.height != static_cast<uint32_t>(intrinsics.height)) {
    return Invalid(path + ": " + SizeText(info.width, info.height) +
                   " pixels, intrinsics.json says " +
                   SizeText(intrinsics.width, intrinsics.height));
  }
  return weftcore::Status();
}

weftcore::Status CheckDepthPng(const std::string& path, const Intrinsics& intrinsics) {
  PngInfo info;
  weftcore::Status status = ReadPngInfo(path, &info);
  if (status.ok()) status = CheckPngChunks(path);
  if (status.IsError()) return status;
  if (info.bitDepth != 16 || info.colorType != 0) {
    return Invalid(path + ": " + DescribePngFormat(info) + " PNG, expected 16-bit grayscale");
  }
  return CheckDepthSize(path, info, intrinsics);
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
                                  ? CheckDepthPng(path, recording->intrinsics)
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

// depth.txt gives the frames and their times, rgb.txt (optional) the colour
// images to pick from; the folders they name are not listed.
weftcore::Status LoadLists(const std::string& directory, Recording* recording) {
  for (const char* clash : {"/timestamps.txt", "/pointcloud"}) {
    if (std::filesystem::exists(directory + clash)) {
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

// color/ or rgb/: one image per frame, in the frames' order.
weftcore::Status ListColorFiles(const std::string& directory, Recording* recording) {
  std::string found;
  for (const char* name : {"/color", "/rgb"}) {
    const std::string folder = directory + name;
    std::vector<std::string> files = ListFiles(folder, {".png", ".jpg", ".jpeg"});
    if (files.empty()) continue;
    if (!found.empty()) return Invalid(directory + ": both color/ and rgb/ hold images; keep one");
    found = folder;
    if (files.size() != recording->frameFiles.size()) {
      return Invalid(folder + ": " + std::to_string(files.size()) + " colour images for " +
                     std::to_string(recording->frameFiles.size()) + " frames");
    }
    recording->colorFiles = std::move(files);
  }
  return weftcore::Status();
}

// Every colour image is read once through (a damaged one is named now, not
// halfway through a run); they share one size, which the calibration's
// colour camera must have, or the depth camera's when there is no calibration.
weftcore::Status CheckColorFiles(Recording* recording) {
  const ZeltoTof::ZeltoTofCalibrationSettingsProperty_& calibration = recording->calibration;
  const std::string expected = recording->hasCalibrationFile ? "calibration.json says "
                                                             : "the depth images are ";
  for (const std::string& path : recording->colorFiles) {
    if (path.empty()) continue;
    uint32_t width = 0, height = 0;
    weftcore::Status status = CheckColorImage(path, &width, &height);
    if (status.IsError()) return status;
    if (width != static_cast<uint32_t>(calibration.colorWidth) ||
        height != static_cast<uint32_t>(calibration.colorHeight)) {
      return Invalid(path + ": " + SizeText(width, height) + " pixels, " + expected +
                     SizeText(calibration.colorWidth, calibration.colorHeight));
    }
    recording->colorWidth = width;
    recording->colorHeight = height;
  }
  return weftcore::Status();
}

// The camera JSON under either name; both at once would be ambiguous.
weftcore::Status FindIntrinsicsFile(const std::string& directory, std::string* path) {
  const std::string main = directory + "/intrinsics.json", other = directory + "/camera.json";
  const bool hasMain = IsRegularFile(main), hasOther = IsRegularFile(other);
  if (hasMain && hasOther) return Invalid(other + ": intrinsics.json describes the camera too; keep one");
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
  std::string intrinsicsPath;
  weftcore::Status status = FindIntrinsicsFile(directory, &intrinsicsPath);
  if (lists) recording->intrinsics.depthScale = kListLayoutDepthScale;
  if (status.ok()) {
    status = ParseIntrinsicsFile(intrinsicsPath, &recording->intrinsics, &recording->warnings);
  }
  if (status.ok()) status = lists ? LoadLists(directory, recording) : LoadFrames(directory, recording);
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
    if (status.ok()) status = CheckDepthSize(path, info, intrinsics);
    if (status.IsError()) return status;
    points->resize(depth.size() * 3);
    DepthImageToPointCloud(depth.data(), intrinsics, points->data());
  }
  if (status.ok()) ClipDepth(intrinsics, points);
  return status;
}

weftcore::Status ReadColorFrame(const Recording& recording, size_t index, ColorImage* image) {
  if (index >= recording.colorFiles.size() || recording.colorFiles[index].empty()) {
    return SimError(weftcore::kCauseNotFound,
                    recording.directory + ": frame " + std::to_string(index) + " has no colour image");
  }
  weftcore::Status status = ReadColorImage(recording.colorFiles[index], image);
  if (status.ok() && (image->width != recording.colorWidth || image->height != recording.colorHeight)) {
    status = Invalid(recording.colorFiles[index] + ": " + SizeText(image->width, image->height) +
                     " pixels, the recording's colour images are " +
                     SizeText(recording.colorWidth, recording.colorHeight));
  }
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
