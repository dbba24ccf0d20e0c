// zelto-mesh: the command-line host of component_zelto_mesh (docs/cli.md).
#include "command_line.h"
#include "info_command.h"
#include "run_command.h"

int main(int argc, char** argv) {
  zelto_cli::ParsedCommandLine parsed;
  bool done = false;
  const int code = zelto_cli::ParseCommandLine(argc, argv, &parsed, &done);
  if (done) return code;
  switch (parsed.command) {
    case zelto_cli::Command::kRun:
      return zelto_cli::RunCommand(parsed.run);
    case zelto_cli::Command::kInfo:
      return zelto_cli::InfoCommand();
    case zelto_cli::Command::kNone:
      break;
  }
  return zelto_cli::kExitUsage;
}
