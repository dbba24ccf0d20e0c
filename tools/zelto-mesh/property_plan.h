// The property sets a run makes between Open and Start, in order.
#pragma once

#include <string>
#include <vector>

#include "json_msgpack.h"
#include "run_options.h"
#include "weftcore/status.h"
#include "weftcore/stream.h"
#include "zelto_sim/recording.h"

namespace zelto_cli {

// Applies, in this order: --log-level (kZeltoLogLevelKey), --frame-rate
// (frame_rate_property), --reduction/--reset-period
// (kZeltoMeshAlgorithmConfigKey), --mask/--mask-threshold
// (kZeltoMeshMaskSettingsKey), then every --set as given. Every record is
// read first and only the given fields change, so that a --set of one field
// keeps the others and what the options before it set. `recording` (null for the synthetic scene) supplies the default
// mask sources. On failure `action` is "set KEY" or "get KEY".
weftcore::Status ApplyProperties(weftcore::Stream* stream, const RunOptions& options,
                                 const ZeltoSim::Recording* recording, std::string* action);

// The mask info list of kZeltoMeshMaskSettingsKey for `masks`.
Json MaskInfoJson(const std::vector<MaskOption>& masks, const ZeltoSim::Recording* recording);

}  // namespace zelto_cli
