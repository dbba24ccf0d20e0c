// One output file per delivered frame, in the chosen format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "mesh.h"

namespace zelto_cli {

enum class OutputFormat { kPly, kObj, kRaw, kNone };

// "ply", "obj", "raw", "none".
const char* FormatName(OutputFormat format);

// "frame_000012.ply"; raw frames end in ".bin". Empty for kNone.
std::string FrameFileName(OutputFormat format, int64_t index);

struct FrameOutput {
  std::string directory;
  OutputFormat format = OutputFormat::kPly;
  bool keep_invalid = false;  // keep vertices at the invalid depth (ply, obj)
};

// Writes frame `index`: raw writes `bytes` (channel 0 exactly as delivered),
// ply and obj write `mesh`. Nothing for kNone.
bool WriteFrame(const FrameOutput& output, int64_t index, const uint8_t* bytes, size_t size,
                const Mesh& mesh, std::string* error);

}  // namespace zelto_cli
