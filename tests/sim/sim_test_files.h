// Scratch recordings for the sim's tests: a temporary directory removed on
// destruction, and writers for the files of the recording format.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ZeltoSimTest {

class TempDirectory {
 public:
  TempDirectory();
  ~TempDirectory();
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// Creates parent directories as needed.
void WriteText(const std::string& path, const std::string& text);
void WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes);
void WritePng16(const std::string& path, uint32_t width, uint32_t height,
                const std::vector<uint16_t>& samples);
void WritePng8(const std::string& path, uint32_t width, uint32_t height,
               const std::vector<uint8_t>& samples);

// intrinsics.json for a width x height camera: fx = fy = 2, cx = 1, cy = 1,
// and `depthScale` (omitted when 0).
std::string IntrinsicsJson(int width, int height, double depthScale);
// `dir` with intrinsics.json (depth_scale 1000) and `frames` depth PNGs
// depth/00000.png... whose samples are 100 * (frame + 1) + pixel index.
void MakeDepthRecording(const std::string& dir, int width, int height, int frames);

}  // namespace ZeltoSimTest
