// The command line: `zelto-mesh run [options]` and `zelto-mesh info`.
#pragma once

#include <memory>
#include <string>

#include "run_options.h"

namespace CLI {
class App;
}

namespace zelto_cli {

enum class Command { kNone, kRun, kInfo };

struct ParsedCommandLine {
  Command command = Command::kNone;
  RunOptions run;
};

// Exit codes of the program.
enum ExitCode : int {
  kExitOk = 0,
  kExitFailure = 1,   // the component or the host reported an error
  kExitUsage = 2,     // bad arguments, a missing or malformed recording
  kExitNoFrames = 3,  // no frame came within the time-out
};

// Parses argv. On --help prints the help to stdout and returns kExitOk with
// `done` set; on a bad argument prints "error: ..." to stderr and returns
// kExitUsage with `done` set. Otherwise `done` is false and `parsed` holds
// the command.
int ParseCommandLine(int argc, const char* const* argv, ParsedCommandLine* parsed, bool* done);

}  // namespace zelto_cli
