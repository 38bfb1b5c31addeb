#pragma once

#include "platform/abi/base.h"

namespace orv::objects {

// Implements runtime::CreateFreeThreadedMarshaler: creates the system's marshaler, or a replacement
// on systems without COM apartments.
HRESULT CreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner);

}  // namespace orv::objects
