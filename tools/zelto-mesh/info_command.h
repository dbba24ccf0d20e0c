// `zelto-mesh info`: the component's source types and the properties of a
// freshly opened "mesh" source, each with its current value.
#pragma once

namespace zelto_cli {

// Returns the process exit code (command_line.h).
int InfoCommand();

}  // namespace zelto_cli
