// The free-threaded marshaler: the system's own, or a stand-in where there are no apartments.
#pragma once

#include "platform/abi/base.h"

namespace orv::objects {

// Aggregated into `outer`, see runtime::CreateFreeThreadedMarshaler.
HRESULT CreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner);

}  // namespace orv::objects
