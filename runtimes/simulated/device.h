// A device that the library has found.
#pragma once

#include "runtimes/objects/stubs/bluetooth.h"
#include "runtimes/objects/stubs/gatt.h"
#include "runtimes/simulated/world.h"

namespace orv::simulated {

// Devices and services count as open from the moment that the library first holds them until it
// closes them, whether it still holds them or not.
class OpenMark {
  public:
    explicit OpenMark(Device deviceOfObject) : device(std::move(deviceOfObject)) {}

    void Open() noexcept;
    void Close() noexcept;
    bool IsClosed() const { return state.load(std::memory_order_acquire) == Closed; }

  private:
    enum : INT32 { Unseen, Opened, Closed };

    const Device device;
    std::atomic<INT32> state{Unseen};
};

class SimulatedBluetoothLEDevice final
    : public objects::Object<objects::Stub<IBluetoothLEDevice>, objects::Stub<IBluetoothLEDevice3>,
                             IClosable> {
  public:
    explicit SimulatedBluetoothLEDevice(Device device);

    // The work of BluetoothLEDevice.FromBluetoothAddressAsync.
    static HRESULT FromBluetoothAddressAsync(UINT64 address,
                                             IAsyncOperation<BluetoothLEDevice>** operation);

    const Device& Record() const { return record; }
    bool IsClosed() const { return mark.IsClosed(); }

    HRESULT get_BluetoothAddress(UINT64* value) override;
    HRESULT GetGattServicesForUuidWithCacheModeAsync(
        GUID uuid, BluetoothCacheMode mode,
        IAsyncOperation<GattDeviceServicesResult>** operation) override;
    HRESULT Close() override;

  private:
    void GivenOut() noexcept override { mark.Open(); }

    const Device record;
    OpenMark mark;
};

// How the device answers an operation that starts now. A device of a world that is gone answers
// nothing.
Answer AnswerOfDevice(Guard& guard, const Device& device, INT32 operation);

}  // namespace orv::simulated
