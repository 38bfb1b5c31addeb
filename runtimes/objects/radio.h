#pragma once

#include "runtimes/objects/object.h"
#include "runtimes/objects/stubs/bluetooth.h"
#include "runtimes/objects/stubs/radios.h"

namespace orv::objects {

class AdapterObject final : public Object<Stub<IBluetoothAdapter>> {
  public:
    AdapterObject();
};

// A radio, with its state at the time of the library's request.
class RadioObject : public Object<Stub<IRadio>> {
  public:
    RadioObject(RadioKind kindOfRadio, RadioState stateOfRadio);

    HRESULT get_State(RadioState* value) final;
    HRESULT get_Kind(RadioKind* value) final;

  private:
    const RadioKind kind;
    const RadioState state;
};

}  // namespace orv::objects
