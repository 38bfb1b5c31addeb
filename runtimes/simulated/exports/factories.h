#pragma once

#include <string_view>

#include "platform/abi/base.h"

namespace orv::simulated {

// Finds the factory that creates simulated objects of a class, see objects::Factories::Find.
HRESULT FindFactory(std::u16string_view className, const GUID& iid, void** factory);

}  // namespace orv::simulated
