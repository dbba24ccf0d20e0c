// ParseCommandLine: CLI11 with the value checks of run_options.h, so that a bad
// argument is one "error: " line before anything runs.
#include "command_line.h"

#include <charconv>
#include <iostream>
#include <limits>

#include <CLI/CLI.hpp>

namespace zelto_cli {
namespace {

constexpr char kVersion[] = ZELTO_VERSION;  // the project's version, from CMake

// A CLI11 check built from one of the value parsers of run_options.h.
template <typename Value>
CLI::Validator CheckWith(bool (*parse)(const std::string&, Value*, std::string*)) {
  return CLI::Validator(
      [parse](std::string& text) {
        Value value;
        std::string error;
        return parse(text, &value, &error) ? std::string() : error;
      },
      "");
}

// A whole number from `low` to INT_MAX, with no text of its own in the help.
CLI::Validator WholeNumber(int low) {
  return CLI::Validator(
      [low](std::string& text) {
        int value = 0;
        const char* end = text.data() + text.size();
        const auto result = std::from_chars(text.data(), end, value);
        if (result.ec == std::errc() && result.ptr == end && value >= low) return std::string();
        return "'" + text + "' is not a whole number from " + std::to_string(low) + " to " +
               std::to_string(std::numeric_limits<int>::max());
      },
      "");
}

template <typename Value>
Value ParseChecked(bool (*parse)(const std::string&, Value*, std::string*),
                   const std::string& text) {
  Value value{};
  std::string error;
  parse(text, &value, &error);  // already checked by CheckWith
  return value;
}

void AddRunOptions(CLI::App* run, RunOptions* options) {
  run->add_option("--input", options->input,
                  "Recording directory: intrinsics.json or camera.json + depth/*.png [+ color/ or "
                  "rgb/ images], or depth.txt/rgb.txt lists (docs/simulator.md); default: the "
                  "simulator's synthetic scene")
      ->type_name("DIR");
  run->add_option_function<int>(
         "--frames", [options](int frames) { options->frames = frames; },
         "Frames to take; default: every frame of the recording, 60 for the synthetic scene")
      ->type_name("N")
      ->check(WholeNumber(1));
  run->add_option("--out", options->output.directory,
                  "Directory for the per-frame files (default: out)")
      ->type_name("DIR");
  run->add_flag("--replace", options->replace,
                "Remove the frame_* files of an earlier run from the --out directory first "
                "(without it such files stop the run before it starts)");
  static const std::map<std::string, OutputFormat> kFormats = {
      {"ply", OutputFormat::kPly}, {"obj", OutputFormat::kObj}, {"glb", OutputFormat::kGlb},
      {"raw", OutputFormat::kRaw}, {"none", OutputFormat::kNone}};
  run->add_option_function<std::string>(
         "--format", [options](const std::string& name) { options->output.format = kFormats.at(name); },
         "ply: binary little-endian PLY; obj: Wavefront OBJ; glb: binary glTF; raw: channel 0's "
         "flat-layout bytes exactly as delivered (frame_NNNNNN.bin, needs --layout flat); none: "
         "no files (default: ply)")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"ply", "obj", "glb", "raw", "none"}).description(""));
  run->add_option_function<std::string>(
         "--max-edge-jump",
         [options](const std::string& text) {
           options->output.cleaning.max_edge_jump = ParseChecked(ParseEdgeJump, text);
         },
         "ply/obj/glb/preview: leave out the triangles whose corners' depths differ by more than "
         "this fraction of the nearest, the sheets between an object and what is behind it; "
         "off keeps them (default: 0.05)")
      ->type_name("F|off")
      ->check(CheckWith(ParseEdgeJump));
  run->add_flag("--keep-invalid", options->output.cleaning.keep_invalid,
                "ply/obj/glb: keep every vertex, those at the invalid depth 32.001 m included, and "
                "the triangles that touch them (with --max-edge-jump off: the grid as delivered)");
  static const std::map<std::string, Axes> kAxes = {{"camera", Axes::kCamera},
                                                    {"opengl", Axes::kOpenGl}};
  run->add_option_function<std::string>(
         "--axes", [options](const std::string& name) { options->output.axes = kAxes.at(name); },
         "ply/obj/glb: opengl: x right, y up, z towards the viewer, so that viewers show the "
         "scene upright and from the front; camera: x right, y down, z forward, as the component "
         "delivers (default: opengl)")
      ->type_name("AXES")
      ->check(CLI::IsMember({"camera", "opengl"}).description(""));

  run->add_option_function<int32_t>(
         "--reduction", [options](int32_t level) { options->reduction = level; },
         "Mesh reduction level: sample every (L+1)-th pixel (kZeltoMeshAlgorithmConfigKey)")
      ->type_name("L");
  run->add_option_function<int32_t>(
         "--reset-period", [options](int32_t period) { options->reset_period = period; },
         "Re-fit the triangles every P-th frame; 0 keeps the current period "
         "(kZeltoMeshAlgorithmConfigKey)")
      ->type_name("P");
  CLI::Option* playback = run->add_flag(
      "--playback", options->playback,
      "Play the recording through player_tof_stream: its frames in order with their timestamps "
      "(frame_rate_property 15; needs --input)");
  static const std::map<std::string, MeshLayout> kLayouts = {{"flat", MeshLayout::kFlat},
                                                             {"reference", MeshLayout::kReference}};
  CLI::Option* layout =
      run->add_option_function<std::string>(
             "--layout", [options](const std::string& name) { options->layout = kLayouts.at(name); },
             "flat: the self-contained bytes (frame_rate_property 30); reference: the record that "
             "points into the component's arrays (default: reference)")
          ->type_name("LAYOUT")
          ->check(CLI::IsMember({"flat", "reference"}).description(""));
  run->add_option_function<std::string>(
         "--frame-rate",
         [options](const std::string& text) { options->frame_rate = ParseChecked(ParseFrameRate, text); },
         "Expert: set frame_rate_property as given (30 is --layout flat, 15 is --playback, "
         "anything else clears both); DEN defaults to 1")
      ->type_name("NUM[/DEN]")
      ->check(CheckWith(ParseFrameRate))
      ->excludes(playback)
      ->excludes(layout);
  run->add_flag("--remote", options->remote,
                "Runtime settings with isRemoteServer: the source delivers the flat layout");
  run->add_flag_callback(
      "--no-player", [options] { options->player = false; },
      "Leave player_tof_stream out of the host configuration (as on a device with no "
                "recording); --playback is then refused, --frame-rate 15 gets no frames");
  run->add_option_function<std::vector<std::string>>(
         "--mask",
         [options](const std::vector<std::string>& texts) {
           for (const std::string& text : texts) {
             options->masks.push_back(ParseChecked(ParseMaskOption, text));
           }
         },
         "Enable masking with this segmentation mask (repeatable): remove the points it covers, "
         "or with :invert those it does not; :color or :depth picks the mask's camera (default: "
         "the recording's masks/NAME/mask.json, color for the synthetic scene); an unknown NAME "
         "is an error (kZeltoMeshMaskSettingsKey)")
      ->type_name("NAME[:color|:depth][:invert]")
      ->check(CheckWith(ParseMaskOption));
  run->add_option_function<int>(
         "--mask-threshold", [options](int threshold) { options->mask_threshold = threshold; },
         "Mask bytes above T are inside the mask; default: the source's (55)")
      ->type_name("T")
      ->check(CLI::Range(0, 255).description(""));
  run->add_option_function<std::vector<std::string>>(
         "--set",
         [options](const std::vector<std::string>& texts) {
           for (const std::string& text : texts) {
             options->settings.push_back(ParseChecked(ParsePropertySetting, text));
           }
         },
         "Set property KEY to a JSON object before the start, through its MessagePack form "
         "(repeatable, applied after the options above): the current record is read and only "
         "the fields given change (see docs/properties.md)")
      ->type_name("KEY=JSON")
      ->check(CheckWith(ParsePropertySetting));
  run->add_option("--get", options->gets,
                  "After the run print 'KEY <json>' of this property (repeatable; a key that does not "
                  "exist stops the run before the first frame)")
      ->type_name("KEY");
  run->add_flag("--hex", options->hex,
                "With --get: also print the property's MessagePack bytes as hex");
  run->add_option("--preview", options->preview,
                  "Write a shaded picture of the last mesh, cleaned as the files are")
      ->type_name("FILE.png");
  static const std::map<std::string, PreviewView> kViews = {{"camera", PreviewView::kCamera},
                                                            {"side", PreviewView::kSide}};
  run->add_option_function<std::string>(
         "--preview-view",
         [options](const std::string& name) { options->preview_view = kViews.at(name); },
         "camera: as the camera saw it; side: turned 55 degrees and from above, where the sheets "
         "across depth jumps show (default: camera)")
      ->type_name("VIEW")
      ->check(CLI::IsMember({"camera", "side"}).description(""));
  run->add_option("--stats", options->stats, "Write one JSON line of statistics per frame")
      ->type_name("FILE.jsonl");
  run->add_flag("-q,--quiet", options->quiet, "No progress bar and no summary");
  run->add_option_function<std::string>(
         "--log-level",
         [options](const std::string& text) { options->log_level = ParseChecked(ParseLogLevel, text); },
         "Show the component's log records on stderr from this level on "
         "(verbose, debug, info, warn, error, silent, or 2..8)")
      ->type_name("LEVEL")
      ->check(CheckWith(ParseLogLevel));
  run->add_option("--timeout", options->timeout_ms,
                  "Give up when no frame comes within this many milliseconds (default: 5000)")
      ->type_name("MS")
      ->check(WholeNumber(1));
}

}  // namespace

int ParseCommandLine(int argc, const char* const* argv, ParsedCommandLine* parsed, bool* done) {
  *done = true;
  CLI::App app(
      "zelto-mesh: runs the ZeltoMesh component on the simulated camera and writes the meshes.",
      "zelto-mesh");
  app.set_version_flag("--version", std::string("zelto-mesh ") + kVersion);
  app.require_subcommand(1);
  app.footer(
      "Examples:\n"
      "  zelto-mesh run                                   60 frames of the synthetic scene to out/\n"
      "  zelto-mesh run --input examples/redwood --preview out/preview.png\n"
      "  zelto-mesh info                                  source types and properties\n"
      "Run 'zelto-mesh COMMAND --help' for the options of a command (docs/cli.md).");
  CLI::App* run = app.add_subcommand("run", "Open a mesh stream, take frames and write them");
  run->footer(
      "Properties are set after Open and before Start, in this order: --log-level, "
      "--playback/--layout/--frame-rate, --reduction/--reset-period, --mask*, --set.\n"
      "Exit status: 0 done, 1 the component failed or a file could not be written, 2 bad "
      "arguments, recording or output target, 3 no frame within --timeout.\n"
      "Every output target is checked before the first frame; each file is written under a "
      "temporary name and renamed when complete.");
  AddRunOptions(run, &parsed->run);
  CLI::App* info =
      app.add_subcommand("info", "List the component's source types and the mesh properties");

  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp& help) {
    return app.exit(help);
  } catch (const CLI::CallForVersion& version) {
    return app.exit(version);
  } catch (const CLI::ParseError& error) {
    if (argc <= 1) {
      std::cerr << app.help();
    } else if (!run->parsed() && !info->parsed() && argv[1][0] != '-') {
      // CLI11 would only say that a subcommand is required.
      std::cerr << "error: unknown command '" << argv[1] << "' (run or info)\n";
      return kExitUsage;
    }
    std::cerr << "error: " << error.what() << "\n";
    return kExitUsage;
  }
  parsed->command = run->parsed() ? Command::kRun : info->parsed() ? Command::kInfo : Command::kNone;
  std::string error;
  if (parsed->command == Command::kRun && !ResolveRunOptions(&parsed->run, &error)) {
    std::cerr << "error: " << error << "\n";
    return kExitUsage;
  }
  *done = false;
  return kExitOk;
}

}  // namespace zelto_cli
