// Short names for the parts that runtimes consist of.
#pragma once

#include "runtimes/objects/object.h"

namespace orv::bluez {

using objects::Call;
using objects::Make;
using objects::Member;
using objects::Property;
using objects::Ref;

}  // namespace orv::bluez
