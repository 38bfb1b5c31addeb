#include "runtimes/objects/marshaler.h"

namespace orv {

extern "C" __declspec(dllimport) HRESULT
    CoCreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner);

namespace objects {

HRESULT CreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner) {
    return CoCreateFreeThreadedMarshaler(outer, inner);
}

}  // namespace objects
}  // namespace orv
