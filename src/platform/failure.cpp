#include "platform/failure.h"

#include <new>

namespace orv {

void RaiseFailure(HRESULT code) {
    if (code == E_OUTOFMEMORY) {
        throw std::bad_alloc();
    }
    throw PlatformFailure{code};
}

}  // namespace orv
