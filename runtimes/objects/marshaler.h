// The system's free-threaded marshaler, or a replacement on systems without COM apartments.
#pragma once

#include "platform/abi/base.h"

namespace orv::objects {

// Creates a marshaler that `outer` aggregates, see runtime::CreateFreeThreadedMarshaler.
HRESULT CreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner);

}  // namespace orv::objects
