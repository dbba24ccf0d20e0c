// The colour images of a recording: which file belongs to which frame and
// whether every one of them is whole and of the colour camera's size.
#pragma once

#include <string>

#include "weftcore/status.h"
#include "zelto_sim/recording.h"

namespace ZeltoSim {

// color/ or rgb/ (not both): PNG and JPEG files, exactly one per frame,
// paired with the frames in name order. Neither folder: no colour.
weftcore::Status ListColorFiles(const std::string& directory, Recording* recording);

// Reads every listed colour image through once (CheckColorImage) and sets
// colorWidth and colorHeight; all must have the calibration's colour size,
// which without calibration.json is the depth images' size.
weftcore::Status CheckColorFiles(Recording* recording);

}  // namespace ZeltoSim
