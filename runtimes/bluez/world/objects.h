// Short names of classes and functions that all runtimes share.
#pragma once

#include "runtimes/objects/object.h"

namespace orv::bluez {

using objects::Call;
using objects::Make;
using objects::Member;
using objects::Property;
using objects::Ref;

}  // namespace orv::bluez
