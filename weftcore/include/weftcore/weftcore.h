// Everything a component sees of the framework.
#pragma once

#include "weftcore/core.h"
#include "weftcore/frame.h"
#include "weftcore/frame_info.h"
#include "weftcore/frame_signal.h"
#include "weftcore/framework_properties.h"
#include "weftcore/memory_allocator.h"
#include "weftcore/osal.h"
#include "weftcore/property_accessor.h"
#include "weftcore/serialize.h"
#include "weftcore/status.h"
#include "weftcore/stream.h"
#include "weftcore/stream_function_lock.h"
#include "weftcore/stream_source.h"
#include "weftcore/stream_source_factory.h"
#include "weftcore/stream_source_utility.h"
