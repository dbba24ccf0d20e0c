#include "recording_color.h"

#include "directory_listing.h"
#include "sim_error.h"
#include "zelto_sim/color_image.h"

namespace ZeltoSim {

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

// A damaged image is named now rather than halfway through a run.
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

weftcore::Status ReadColorFrame(const Recording& recording, size_t index, ColorImage* image) {
  if (index >= recording.colorFiles.size() || recording.colorFiles[index].empty()) {
    return SimError(weftcore::kCauseNotFound, recording.directory + ": frame " +
                                                  std::to_string(index) + " has no colour image");
  }
  weftcore::Status status = ReadColorImage(recording.colorFiles[index], image);
  if (status.ok() &&
      (image->width != recording.colorWidth || image->height != recording.colorHeight)) {
    status = Invalid(recording.colorFiles[index] + ": " + SizeText(image->width, image->height) +
                     " pixels, the recording's colour images are " +
                     SizeText(recording.colorWidth, recording.colorHeight));
  }
  return status;
}

}  // namespace ZeltoSim
