// The small files of a recording: intrinsics, calibration, timestamps.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "properties/zelto_tof_properties.h"
#include "weftcore/status.h"
#include "zelto_sim/recording.h"

namespace ZeltoSim {

// The camera JSON: width, height (positive integers) and either fx, fy
// (positive), cx, cy or a column-major 3x3 "intrinsic_matrix"; optional
// depth_scale (positive; *intrinsics holds the default), near and far
// (metres, 0 <= near < far). Lens distortion coefficients other than 0 are
// refused (the depth images would have to be undistorted first); other
// unknown keys are appended to `warnings`.
weftcore::Status ParseIntrinsicsFile(const std::string& path, Intrinsics* intrinsics,
                                     std::vector<std::string>* warnings);

// Colour camera = depth camera, R = identity, T = 0, isCalibrated false.
ZeltoTof::ZeltoTofCalibrationSettingsProperty_ IdentityCalibration(const Intrinsics& intrinsics);

// calibration.json: any fields of the calibration record (nested objects
// "c", "d", "R", "T"); absent fields keep the values *calibration holds.
weftcore::Status ParseCalibrationFile(const std::string& path,
                                      ZeltoTof::ZeltoTofCalibrationSettingsProperty_* calibration);

// One timestamp: integer nanoseconds ("1305031102160407000") or, with a
// decimal point, seconds ("1305031102.160407"), converted exactly (digits
// past the ninth decimal round half up). False for anything else.
bool ParseTimestamp(const std::string& text, bool seconds, uint64_t* nanoseconds);

// timestamps.txt: one timestamp per non-blank line, exactly `frameCount` of
// them.
weftcore::Status ParseTimestampsFile(const std::string& path, size_t frameCount,
                                     std::vector<uint64_t>* timestamps);

}  // namespace ZeltoSim
