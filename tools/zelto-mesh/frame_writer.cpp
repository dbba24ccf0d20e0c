// WriteFrame and the per-frame file names.
#include "frame_writer.h"

#include <cstdio>
#include <regex>

#include "file_io.h"
#include "glb_writer.h"
#include "obj_writer.h"
#include "ply_writer.h"

namespace zelto_cli {

const char* FormatName(OutputFormat format) {
  switch (format) {
    case OutputFormat::kPly: return "ply";
    case OutputFormat::kObj: return "obj";
    case OutputFormat::kGlb: return "glb";
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

bool IsFrameFileName(const std::string& name) {
  static const std::regex kPattern("frame_[0-9]+\\.(ply|obj|glb|bin)(\\.partial)?");
  return std::regex_match(name, kPattern);
}

bool WriteFrame(const FrameOutput& output, int64_t index, const uint8_t* bytes, size_t size,
                const Mesh& mesh, int64_t* written, std::string* error) {
  if (output.format == OutputFormat::kNone) return true;
  const std::string path = output.directory + "/" + FrameFileName(output.format, index);
  if (output.format == OutputFormat::kRaw) {
    // A record of addresses means nothing in a file. The options ask for the
    // flat layout, but a --set of the frame rate property can still undo it.
    if (mesh.layout != MeshLayout::kFlat) {
      *error = "cannot write " + path + ": the frame came in the reference layout, and --format "
               "raw writes only flat frames";
      return false;
    }
    if (!WriteFile(path, bytes, size, error)) return false;
    *written += static_cast<int64_t>(size);
    return true;
  }
  const Surface surface = MakeSurface(mesh, output.cleaning, output.axes);
  const std::string encoded = output.format == OutputFormat::kPly ? EncodePly(surface, output.axes)
                              : output.format == OutputFormat::kObj
                                  ? EncodeObj(surface, output.axes)
                                  : EncodeGlb(surface);
  if (!WriteFile(path, encoded, error)) return false;
  *written += static_cast<int64_t>(encoded.size());
  return true;
}

}  // namespace zelto_cli
