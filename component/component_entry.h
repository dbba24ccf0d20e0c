// The two entry points the host resolves by their unmangled names; the
// version script exports nothing else.
#pragma once

#include "weftcore/stream_source_factory.h"

extern "C" {

// A new StandardComponent owning a new ZeltoMeshSourceFactory, or null when
// construction failed (no exception leaves the library).
__attribute__((visibility("default"))) weftcore::StandardComponent* CreateComponent();

// Destroys `component`; null is ignored.
__attribute__((visibility("default"))) void DestroyComponent(
    weftcore::StandardComponent* component);

}  // extern "C"
