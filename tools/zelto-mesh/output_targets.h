// The places a run writes to, checked before the first frame, so that a
// mistake in one of them never costs a whole run.
#pragma once

#include <fstream>
#include <string>

#include "run_options.h"

namespace zelto_cli {

// Looks without changing anything: --out and the directories of --preview
// and --stats exist or can be created in a directory this process may write
// in; --out holds no frame files of another run unless --replace; --preview
// and --stats are no directories. False with `error` naming the option.
bool CheckOutputTargets(const RunOptions& options, std::string* error);

// Creates the directories, removes the old frames with --replace, makes
// sure every directory takes new files and opens the statistics file.
// False with `error` ("cannot create DIR: REASON", "cannot write PATH: ...").
bool PrepareOutputTargets(const RunOptions& options, std::ofstream* stats_file, std::string* error);

}  // namespace zelto_cli
