// The factories of the six runtime classes that are activated by name.
#pragma once

#include <string_view>

#include "platform/abi/base.h"

namespace orv::simulated {

// The factory of the class; REGDB_E_CLASSNOTREG for any other name. This is no call of the
// library's yet: whoever answers the library records one under the name by which it asked.
HRESULT FindFactory(std::u16string_view className, const GUID& iid, void** factory);

}  // namespace orv::simulated
