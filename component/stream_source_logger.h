// The stream source module's logger (Part 5.1): one instance shared by every
// .cpp of the module (zelto_mesh_streamsource*.cpp, zelto_time.cpp). Internal
// to the component; never exported.
#pragma once

#include "logging/zelto_logger.h"

// The module's `logger`; constructed during the library's static
// initialisation (zelto_mesh_streamsource.cpp), so it has read the settings
// file before any source exists.
ZeltoLogger& StreamSourceLogger();
