// The small files of a recording: intrinsics, calibration, timestamps.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "properties/zelto_tof_properties.h"
#include "weftcore/status.h"
#include "zelto_sim/recording.h"

namespace ZeltoSim {

// intrinsics.json: width, height (positive integers), fx, fy (positive),
// cx, cy, and depth_scale (positive, optional).
weftcore::Status ParseIntrinsicsFile(const std::string& path, Intrinsics* intrinsics);

// Colour camera = depth camera, R = identity, T = 0, isCalibrated false.
ZeltoTof::ZeltoTofCalibrationSettingsProperty_ IdentityCalibration(const Intrinsics& intrinsics);

// calibration.json: any fields of the calibration record (nested objects
// "c", "d", "R", "T"); absent fields keep the values *calibration holds.
weftcore::Status ParseCalibrationFile(const std::string& path,
                                      ZeltoTof::ZeltoTofCalibrationSettingsProperty_* calibration);

// timestamps.txt: one unsigned decimal per non-blank line, exactly
// `frameCount` of them.
weftcore::Status ParseTimestampsFile(const std::string& path, size_t frameCount,
                                     std::vector<uint64_t>* timestamps);

}  // namespace ZeltoSim
