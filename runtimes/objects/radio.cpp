#include "runtimes/objects/radio.h"

namespace orv::objects {

namespace {

Class adapterClass("BluetoothAdapter");
Class radioClass("Radio");
Member getStateMember(radioClass.name, "get_State");
Member getKindMember(radioClass.name, "get_Kind");

}  // namespace

AdapterObject::AdapterObject() : Object(adapterClass) {}

RadioObject::RadioObject(RadioKind kindOfRadio, RadioState stateOfRadio)
    : Object(radioClass), kind(kindOfRadio), state(stateOfRadio) {}

HRESULT RadioObject::get_State(RadioState* value) {
    return Property(getStateMember, value, state);
}

HRESULT RadioObject::get_Kind(RadioKind* value) {
    return Property(getKindMember, value, kind);
}

}  // namespace orv::objects
