// One output file per delivered frame, in the chosen format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "mesh.h"
#include "mesh_filter.h"
#include "surface.h"

namespace zelto_cli {

enum class OutputFormat { kPly, kObj, kGlb, kRaw, kNone };

// "ply", "obj", "glb", "raw", "none".
const char* FormatName(OutputFormat format);

// "frame_000012.ply"; raw frames end in ".bin". Empty for kNone.
std::string FrameFileName(OutputFormat format, int64_t index);

// True for the names FrameFileName gives in any format (frame_DIGITS.ply,
// .obj, .glb or .bin), and for those names plus ".partial", the files a
// killed run leaves behind.
bool IsFrameFileName(const std::string& name);

struct FrameOutput {
  std::string directory = "out";
  OutputFormat format = OutputFormat::kPly;
  MeshCleaning cleaning;     // ply, obj, glb
  Axes axes = Axes::kOpenGl;  // ply, obj, glb
};

// Writes frame `index`: raw writes `bytes` (channel 0 exactly as delivered;
// flat frames only), ply, obj and glb write the surface of `mesh`. Nothing for kNone. Adds the
// bytes written to `*written`.
bool WriteFrame(const FrameOutput& output, int64_t index, const uint8_t* bytes, size_t size,
                const Mesh& mesh, int64_t* written, std::string* error);

}  // namespace zelto_cli
