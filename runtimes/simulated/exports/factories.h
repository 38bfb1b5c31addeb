// The factories of the six runtime classes that are activated by name.
#pragma once

#include <string_view>

#include "platform/abi/base.h"

namespace orv::simulated {

// Finds a factory of the simulated world, see objects::Factories::Find.
HRESULT FindFactory(std::u16string_view className, const GUID& iid, void** factory);

}  // namespace orv::simulated
