// RunCommand: checks everything that can be checked before the first output,
// then opens the stream, sets its properties, takes and writes the frames.
#include "run_command.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>

#include "command_line.h"
#include "file_io.h"
#include "frame_record.h"
#include "log_sink.h"
#include "mesh_decoding.h"
#include "mesh_filter.h"
#include "mesh_session.h"
#include "output_targets.h"
#include "png_writer.h"
#include "preview_renderer.h"
#include "progress_bar.h"
#include "property_client.h"
#include "property_plan.h"
#include "run_summary.h"
#include "status_text.h"
#include "vertex_colors.h"
#include "zelto_sim/recording.h"
#include "zelto_sim/synthetic_scene.h"

namespace zelto_cli {
namespace {

constexpr int kPreviewWidth = 640;
constexpr int kPreviewHeight = 480;

int Fail(const std::string& line, int code) {
  std::cerr << line << "\n";
  return code;
}

std::string NoFrameMessage(const RunOptions& options, bool player_mapped, int64_t delivered) {
  std::string line = "error: no frame from the mesh stream within " +
                     std::to_string(options.timeout_ms) + " ms";
  if (delivered > 0) line += " after " + std::to_string(delivered) + " frames";
  const bool playback = options.frame_rate && options.frame_rate->num == 15;
  if (playback && !player_mapped) {  // --frame-rate 15; --playback is refused before
    line += options.input.empty()
                ? ": --frame-rate 15 plays \"player_tof_stream\", which needs a recording (--input DIR)"
                : ": --frame-rate 15 plays \"player_tof_stream\", which --no-player leaves out";
  }
  return line;
}

// Waits for the next frame in short slices, so that a device that stopped
// at a frame it cannot read ends the run at once, not after the time-out.
weftcore::Status NextFrame(weftcore::Stream* stream, int timeout_ms, const PlatformLogSink& log,
                           weftcore::Frame** frame) {
  constexpr int kSliceMs = 20;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                          deadline - std::chrono::steady_clock::now())
                          .count();
    const int slice = static_cast<int>(std::clamp<int64_t>(left, 0, kSliceMs));
    const weftcore::Status status = stream->GetFrame(frame, slice);
    if (status.IsError() || *frame != nullptr || left <= kSliceMs || log.DeviceStop()) {
      return status;
    }
  }
}

// Channel 0 of `frame` as bytes.
weftcore::Status MeshChannel(weftcore::Frame* frame, weftcore::Channel::RawData* raw) {
  std::map<uint32_t, weftcore::Channel*> channels;
  weftcore::Status status = frame->GetChannelList(&channels);
  if (status.IsError()) return status;
  const auto found = channels.find(0);
  if (found == channels.end()) {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseNotFound,
                            "frame %llu has no channel 0",
                            static_cast<unsigned long long>(frame->GetSequenceNumber()))
        .SetBlock("zelto-mesh");
  }
  return found->second->GetRawData(raw);
}

// An unknown name would only make the source log an invalid mask and mesh
// everything: refused, naming the masks there are.
int CheckMaskNames(const RunOptions& options, const ZeltoSim::Recording* recording) {
  std::vector<std::string> known = {ZeltoSim::kFloorMaskName, ZeltoSim::kPersonMaskName};
  if (recording != nullptr) {
    known.clear();
    for (const ZeltoSim::MaskTrack& track : recording->masks) known.push_back(track.name);
  }
  for (const MaskOption& mask : options.masks) {
    if (std::find(known.begin(), known.end(), mask.name) != known.end()) continue;
    std::string line = "error: --mask " + mask.name + ": not a mask of " +
                       (recording ? options.input : std::string("the synthetic scene"));
    for (size_t i = 0; i < known.size(); ++i) {
      line += (i == 0 ? "; known masks: " : ", ") + known[i];
    }
    return Fail(line + (known.empty() ? "; it has no masks" : ""), kExitUsage);
  }
  return kExitOk;
}

// Validates --input, --mask and --frames. Returns kExitOk or the code to exit with.
int CheckInput(const RunOptions& options, std::optional<ZeltoSim::Recording>* recording,
               int64_t* frame_goal) {
  if (!options.input.empty()) {
    recording->emplace();
    const weftcore::Status status = ZeltoSim::LoadRecording(options.input, &**recording);
    if (status.IsError()) return Fail("error: " + status.message(), kExitUsage);
    for (const std::string& warning : (*recording)->warnings) {
      std::cerr << "warning: " << warning << "\n";
    }
  }
  const int masks = CheckMaskNames(options, *recording ? &**recording : nullptr);
  if (masks != kExitOk) return masks;
  const int64_t available =
      *recording ? static_cast<int64_t>((*recording)->frameFiles.size()) : -1;
  *frame_goal = options.frames ? *options.frames : *recording ? available : kSceneFrames;
  if (*recording && *frame_goal > available) {
    return Fail("error: --frames " + std::to_string(*frame_goal) + ": " + options.input +
                    " has " + std::to_string(available) + " frames",
                kExitUsage);
  }
  return kExitOk;
}

// The recording frame a delivered mesh was built from, found by its capture
// time. The device delivers the frames in order and stops at a file it
// cannot read; should a frame other than the next one still arrive, the run
// stops there, naming the file, instead of numbering the rest wrong.
bool MatchDelivered(const ZeltoSim::Recording& recording, uint64_t timestamp, size_t* next,
                    std::string* error) {
  const std::optional<size_t> frame = FrameAtTimestamp(recording, timestamp, *next);
  if (!frame) {
    *error = "captured at " + std::to_string(timestamp) + " ns, the time of no frame of " +
             recording.directory;
    return false;
  }
  if (*frame != *next && *next < recording.frameFiles.size()) {
    *error = recording.frameFiles[*next] + " was not delivered (the device passed over it)";
    return false;
  }
  *next = *frame + 1;
  return true;
}

// Takes `frame_goal` frames from the started stream, writing each; keeps
// their records and the bytes written in `summary` and the last mesh in
// `last_mesh`.
int TakeFrames(weftcore::Stream* stream, const RunOptions& options,
               const ZeltoSim::Recording* recording, bool player_mapped,
               const PlatformLogSink& log, int64_t frame_goal, std::ofstream* stats_file,
               SummaryInput* summary, Mesh* last_mesh) {
  ProgressBar progress(ShouldShowProgress(options.quiet, options.log_level.has_value()),
                       frame_goal);
  // An error takes the bar's line.
  const auto fail = [&progress](const std::string& line, int code) {
    progress.Clear();
    return Fail(line, code);
  };
  std::string error;
  size_t next_recording_frame = 0;
  for (int64_t index = 0; index < frame_goal; ++index) {
    weftcore::Frame* frame = nullptr;
    const auto begin = std::chrono::steady_clock::now();
    weftcore::Status status = NextFrame(stream, options.timeout_ms, log, &frame);
    const auto end = std::chrono::steady_clock::now();
    if (status.IsError()) return fail(ErrorLine("get frame", status), kExitFailure);
    if (frame == nullptr) {
      if (const auto stop = log.DeviceStop()) {
        return fail("error: frame " + std::to_string(index) + ": " + *stop, kExitUsage);
      }
      return fail(NoFrameMessage(options, player_mapped, index), kExitNoFrames);
    }

    FrameRecord record;
    record.index = index;
    record.sequenceNumber = frame->GetSequenceNumber();
    record.buildMs = std::chrono::duration<double, std::milli>(end - begin).count();
    weftcore::Channel::RawData raw;
    status = MeshChannel(frame, &raw);
    // Copy now: the reference layout's arrays live until the call after next.
    // Without files the mesh itself is needed only for the preview of the
    // last frame; every other frame gives its counts alone.
    const bool keep_mesh = options.output.format != OutputFormat::kNone ||
                           (!options.preview.empty() && index + 1 == frame_goal);
    const auto* bytes = static_cast<const uint8_t*>(raw.address);
    MeshView view;
    const bool decoded = status.ok() && ViewMesh(bytes, raw.size, &view, &error);
    std::string color_error;
    bool colored =
        decoded && (recording == nullptr ||
                    MatchDelivered(*recording, raw.timestamp, &next_recording_frame, &color_error));
    if (colored && keep_mesh) {
      CopyMesh(view, last_mesh);
      if (recording != nullptr) {
        colored = ColorizeMesh(*recording, next_recording_frame - 1, last_mesh, &color_error);
      }
    }
    const bool written = colored && WriteFrame(options.output, index, bytes, raw.size,
                                               *last_mesh, &summary->bytesWritten, &error);
    const weftcore::Status released = stream->ReleaseFrame(frame);
    const std::string frame_name = "frame " + std::to_string(index);
    if (status.IsError()) return fail(ErrorLine(frame_name, status), kExitFailure);
    if (!decoded) return fail("error: " + frame_name + ": " + error, kExitFailure);
    // A colour image that passed the up-front check but does not decode.
    if (!colored) return fail("error: " + frame_name + ": " + color_error, kExitUsage);
    if (!written) return fail("error: " + error, kExitFailure);
    if (released.IsError()) return fail(ErrorLine("release frame", released), kExitFailure);

    record.capturedTimestamp = raw.timestamp;
    record.vertexCount = view.vertexCount;
    record.triangleCount = view.triangleCount;
    record.resetTriangle = view.resetTriangle;
    record.layout = view.layout;
    record.bytes = raw.size;
    if (stats_file->is_open()) *stats_file << StatsLine(record) << "\n";
    summary->frames.push_back(record);
    progress.Update(index + 1);
  }
  return kExitOk;
}

// "KEY <json>" (and the hex line) of every --get, or an error line.
bool ReadProperties(weftcore::Stream* stream, const RunOptions& options, std::string* text,
                    std::string* error_line) {
  for (const std::string& key : options.gets) {
    std::vector<uint8_t> bytes;
    const weftcore::Status status = GetPropertyBytes(stream, key, &bytes);
    if (status.IsError()) {
      *error_line = ErrorLine("get " + key, status);
      return false;
    }
    try {
      *text += key + " " + MsgpackToJson(bytes.data(), bytes.size()).dump() + "\n";
    } catch (const std::exception& decode_error) {
      *error_line = "error: get " + key + ": " + decode_error.what();
      return false;
    }
    if (options.hex) *text += HexText(bytes) + "\n";
  }
  return true;
}

}  // namespace

int RunCommand(const RunOptions& options) {
  // Everything that can be wrong with the input is found before any output.
  std::optional<ZeltoSim::Recording> recording;
  int64_t frame_goal = 0;
  const int checked = CheckInput(options, &recording, &frame_goal);
  if (checked != kExitOk) return checked;
  std::string error;
  if (!CheckOutputTargets(options, &error)) return Fail("error: " + error, kExitUsage);
  RemovePartialFileOnSignals();

  // Log records of the component, from Open on (the sim's "zelto_stream"
  // hands the level to the source at Open), and the device's report of a
  // frame it could not read. Outlives the session.
  const PlatformLogSink log_sink(options.log_level.has_value());

  ZeltoSim::HostOptions host_options;
  host_options.sim.input = options.input;
  host_options.sim.remote = options.remote;
  if (options.log_level) host_options.sim.logLevel = *options.log_level;
  host_options.player = recording.has_value() && options.player;
  MeshSession session(host_options);

  weftcore::Status status = session.Open();
  if (status.IsError()) return Fail(ErrorLine("open mesh", status), kExitFailure);
  std::string action;
  status = ApplyProperties(session.stream(), options, recording ? &*recording : nullptr, &action);
  if (status.IsError()) return Fail(ErrorLine(action, status), kExitFailure);

  // Every --get key is read once before the first frame, so that a typo
  // costs no run.
  std::string get_lines;
  if (!ReadProperties(session.stream(), options, &get_lines, &error)) {
    return Fail(error, kExitFailure);
  }
  std::ofstream stats_file;
  if (!PrepareOutputTargets(options, &stats_file, &error)) {
    return Fail("error: " + error, kExitFailure);
  }

  status = session.Start();
  if (status.IsError()) return Fail(ErrorLine("start mesh", status), kExitFailure);
  SummaryInput summary;
  summary.source = recording ? options.input : "the synthetic scene";
  summary.output = options.output;
  summary.preview = options.preview;
  summary.stats = options.stats;
  Mesh last_mesh;
  const auto loop_begin = std::chrono::steady_clock::now();
  const int taken =
      TakeFrames(session.stream(), options, recording ? &*recording : nullptr,
                 host_options.player, log_sink, frame_goal, &stats_file, &summary, &last_mesh);
  summary.loopSeconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - loop_begin).count();
  if (taken != kExitOk) return taken;
  status = session.Stop();
  if (status.IsError()) return Fail(ErrorLine("stop mesh", status), kExitFailure);

  get_lines.clear();
  if (!ReadProperties(session.stream(), options, &get_lines, &error)) {
    return Fail(error, kExitFailure);
  }
  if (stats_file.is_open()) {
    stats_file.close();
    if (!stats_file) return Fail("error: cannot write " + options.stats, kExitFailure);
  }
  if (!options.preview.empty()) {
    // The preview shows what the files hold, apart from the invalid vertices.
    MeshCleaning cleaning = options.output.cleaning;
    cleaning.keep_invalid = false;
    const Image picture = RenderPreview(CleanMesh(last_mesh, cleaning), kPreviewWidth,
                                        kPreviewHeight, options.preview_view);
    if (!WritePng(options.preview, picture, &error)) return Fail("error: " + error, kExitFailure);
  }
  std::cout << get_lines;
  if (!options.quiet) std::cout << SummaryText(summary);
  return kExitOk;
}

}  // namespace zelto_cli
