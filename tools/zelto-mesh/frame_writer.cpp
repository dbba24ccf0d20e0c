// WriteFrame and the per-frame file names.
#include "frame_writer.h"

#include <cstdio>

#include "file_io.h"
#include "mesh_filter.h"
#include "obj_writer.h"
#include "ply_writer.h"

namespace zelto_cli {

const char* FormatName(OutputFormat format) {
  switch (format) {
    case OutputFormat::kPly: return "ply";
    case OutputFormat::kObj: return "obj";
    case OutputFormat::kRaw: return "raw";
    case OutputFormat::kNone: return "none";
  }
  return "none";
}

std::string FrameFileName(OutputFormat format, int64_t index) {
  if (format == OutputFormat::kNone) return "";
  const char* extension = format == OutputFormat::kRaw ? "bin" : FormatName(format);
  char name[64];
  std::snprintf(name, sizeof name, "frame_%06lld.%s", static_cast<long long>(index), extension);
  return name;
}

bool WriteFrame(const FrameOutput& output, int64_t index, const uint8_t* bytes, size_t size,
                const Mesh& mesh, std::string* error) {
  if (output.format == OutputFormat::kNone) return true;
  const std::string path = output.directory + "/" + FrameFileName(output.format, index);
  if (output.format == OutputFormat::kRaw) return WriteFile(path, bytes, size, error);
  Mesh filtered;
  const Mesh* shown = &mesh;
  if (!output.keep_invalid) {
    filtered = WithoutInvalidDepth(mesh);
    shown = &filtered;
  }
  return WriteFile(path,
                   output.format == OutputFormat::kPly ? EncodePly(*shown) : EncodeObj(*shown),
                   error);
}

}  // namespace zelto_cli
