#pragma once

#include <atomic>

#include "runtimes/bluez/daemon/notifications.h"
#include "runtimes/bluez/world/objects.h"
#include "runtimes/objects/event.h"
#include "runtimes/objects/gatt.h"

namespace orv::bluez {

// Keeps the device's link in use until the object is closed or destroyed.
class BluezBluetoothLEDevice final : public objects::DeviceObject {
  public:
    // Call this on the event loop's thread.
    explicit BluezBluetoothLEDevice(UINT64 addressOfDevice);
    ~BluezBluetoothLEDevice();

    static HRESULT FromBluetoothAddressAsync(UINT64 address,
                                             IAsyncOperation<BluetoothLEDevice>** operation);

    UINT64 Address() const override { return address; }
    bool IsClosed() const override { return closed.load(std::memory_order_acquire); }

  private:
    HRESULT FindServices(const GUID& uuid,
                         IAsyncOperation<GattDeviceServicesResult>** operation) override;
    void Shut() override;

    const UINT64 address;
    std::atomic<bool> closed{false};
};

class BluezGattDeviceService final : public objects::ServiceObject {
  public:
    BluezGattDeviceService(const Ref<BluezBluetoothLEDevice>& owner, Path pathOfService);

  private:
    HRESULT RequestAccess(IAsyncOperation<DeviceAccessStatus>** operation) override;
    HRESULT FindCharacteristics(const GUID& uuid,
                                IAsyncOperation<GattCharacteristicsResult>** operation) override;
    void Shut() override;
    bool IsShut() const override { return closed.load(std::memory_order_acquire); }

    const Path path;
    std::atomic<bool> closed{false};
};

class BluezGattCharacteristic final : public objects::CharacteristicObject, public Subscriber {
  public:
    BluezGattCharacteristic(const Ref<BluezGattDeviceService>& owner, Path pathOfCharacteristic);

    void Receive(const Bytes& value) override;
    bool IsOpen() const override { return HasOpenService(); }

  private:
    HRESULT Write(const Ref<objects::MemoryBuffer>& block,
                  IAsyncOperation<GattCommunicationStatus>** operation) override;
    HRESULT EnableNotifications(bool on,
                                IAsyncOperation<GattCommunicationStatus>** operation) override;
    EventRegistrationToken AddHandler(
        objects::SharedHandler<objects::ValueChangedHandler> handler) override;

    const Path path;
    Mutex mutex;
    objects::Event<objects::ValueChangedHandler> changed GUARDED_BY(mutex);
};

}  // namespace orv::bluez
