// `zelto-mesh run`: the order of life of the spec's Overview, from the host's
// side, with the frames written out.
#pragma once

#include "run_options.h"

namespace zelto_cli {

// Returns the process exit code (command_line.h).
int RunCommand(const RunOptions& options);

}  // namespace zelto_cli
