// The stream source module's logger: one instance shared by every .cpp of
// the module (zelto_mesh_streamsource*.cpp). Internal to the component;
// never exported.
#pragma once

#include "logging/zelto_logger.h"

// The module's `logger`; constructed during the library's static
// initialisation (zelto_mesh_streamsource.cpp), so it has read the settings
// file before any source exists.
ZeltoLogger& StreamSourceLogger();
