// Symbol visibility of the framework library. Components are built with hidden
// visibility; the framework's own types keep default visibility so that type
// information and out-of-line members resolve to libweftcore.so.
#pragma once

#define WEFTCORE_API __attribute__((visibility("default")))
