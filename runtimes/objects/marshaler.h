// The free-threaded marshaler of the system, or a replacement on systems without apartments.
#pragma once

#include "platform/abi/base.h"

namespace orv::objects {

// Creates a marshaler that `outer` aggregates, see runtime::CreateFreeThreadedMarshaler.
HRESULT CreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner);

}  // namespace orv::objects
