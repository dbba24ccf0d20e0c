// The host and its clients call the component across a boundary that no
// exception may cross: they cannot know the component's exception types, and
// an exception unwinding through a C entry point or another library's frames
// ends the process. Every operation they call runs its body through here.
#pragma once

#include <exception>
#include <new>

#include "component/zelto_mesh_constants.h"
#include "weftcore/status.h"

namespace ZeltoMesh {

// `body()`'s status; an exception becomes an error status naming `operation`:
// "Open: out of memory." (cause 6) for a failed allocation, "Open: <what>"
// (cause 1) for anything else. Only the status itself still allocates, a few
// dozen bytes that even an exhausted heap has usually just given back.
template <typename Body>
weftcore::Status WithoutExceptions(const char* operation, Body&& body) {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseOutOfMemory,
                            "%s: out of memory.", operation)
        .SetBlock(kComponentName);
  } catch (const std::exception& e) {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseUnknown, "%s: %s", operation,
                            e.what())
        .SetBlock(kComponentName);
  } catch (...) {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseUnknown,
                            "%s: unknown exception.", operation)
        .SetBlock(kComponentName);
  }
}

}  // namespace ZeltoMesh
