#include "sim/sim_test_files.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "zelto_sim/png_io.h"

namespace ZeltoSimTest {
namespace fs = std::filesystem;

TempDirectory::TempDirectory() {
  static std::atomic<int> counter{0};
  path_ = (fs::temp_directory_path() /
           ("zelto_sim_test_" + std::to_string(getpid()) + "_" + std::to_string(counter++)))
              .string();
  fs::remove_all(path_);
  fs::create_directories(path_);
}

TempDirectory::~TempDirectory() {
  std::error_code error;
  fs::remove_all(path_, error);
}

namespace {

void MakeParent(const std::string& path) { fs::create_directories(fs::path(path).parent_path()); }

std::string Frame(int index, const char* extension) {
  char name[32];
  std::snprintf(name, sizeof(name), "%05d%s", index, extension);
  return name;
}

}  // namespace

void WriteText(const std::string& path, const std::string& text) {
  MakeParent(path);
  std::ofstream(path, std::ios::binary) << text;
}

void WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
  MakeParent(path);
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

void WritePng16(const std::string& path, uint32_t width, uint32_t height,
                const std::vector<uint16_t>& samples) {
  MakeParent(path);
  if (ZeltoSim::WriteGrayPng(path, width, height, 16, samples.data()).IsError()) {
    throw std::runtime_error("cannot write " + path);
  }
}

void WritePng8(const std::string& path, uint32_t width, uint32_t height,
               const std::vector<uint8_t>& samples) {
  MakeParent(path);
  if (ZeltoSim::WriteGrayPng(path, width, height, 8, samples.data()).IsError()) {
    throw std::runtime_error("cannot write " + path);
  }
}

std::string IntrinsicsJson(int width, int height, double depthScale) {
  std::string json = "{\"width\": " + std::to_string(width) +
                     ", \"height\": " + std::to_string(height) +
                     ", \"fx\": 2, \"fy\": 2, \"cx\": 1, \"cy\": 1";
  if (depthScale != 0) json += ", \"depth_scale\": " + std::to_string(depthScale);
  return json + "}";
}

void MakeDepthRecording(const std::string& dir, int width, int height, int frames) {
  WriteText(dir + "/intrinsics.json", IntrinsicsJson(width, height, 1000));
  for (int f = 0; f < frames; ++f) {
    std::vector<uint16_t> samples(static_cast<size_t>(width) * height);
    for (size_t i = 0; i < samples.size(); ++i)
      samples[i] = static_cast<uint16_t>(100 * (f + 1) + i);
    WritePng16(dir + "/depth/" + Frame(f, ".png"), width, height, samples);
  }
}

}  // namespace ZeltoSimTest
