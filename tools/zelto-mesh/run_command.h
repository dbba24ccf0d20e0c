// `zelto-mesh run`: a stream's whole life from the host's side (open, set the
// properties, start, take the frames, stop, close), with the frames written out.
#pragma once

#include "run_options.h"

namespace zelto_cli {

// Returns the process exit code (command_line.h).
int RunCommand(const RunOptions& options);

}  // namespace zelto_cli
