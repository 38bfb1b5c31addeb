#pragma once

#include "runtimes/objects/gatt.h"
#include "runtimes/objects/gatt_results.h"
#include "runtimes/simulated/world/operations.h"

namespace orv::simulated {

// Counts a device or service as open from the library's first reference to it until it is closed,
// even if the library releases it without closing it.
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

class SimulatedBluetoothLEDevice final : public objects::DeviceObject {
  public:
    explicit SimulatedBluetoothLEDevice(Device device);

    static HRESULT FromBluetoothAddressAsync(UINT64 address,
                                             IAsyncOperation<BluetoothLEDevice>** operation);

    const Device& Record() const { return record; }
    UINT64 Address() const override { return record->address; }
    bool IsClosed() const override { return mark.IsClosed(); }

  private:
    void OnFirstExternal() noexcept override { mark.Open(); }
    HRESULT FindServices(const GUID& uuid,
                         IAsyncOperation<GattDeviceServicesResult>** operation) override;
    void Shut() override { mark.Close(); }

    const Device record;
    OpenMark mark;
};

class SimulatedGattDeviceService final : public objects::ServiceObject {
  public:
    // `index` is the index of the service in the device's record.
    SimulatedGattDeviceService(const objects::Ref<SimulatedBluetoothLEDevice>& owner,
                               std::size_t index);

    const Device& Record() const { return record; }
    std::size_t Index() const { return position; }

  private:
    void OnFirstExternal() noexcept override { mark.Open(); }
    HRESULT RequestAccess(IAsyncOperation<DeviceAccessStatus>** operation) override;
    HRESULT FindCharacteristics(const GUID& uuid,
                                IAsyncOperation<GattCharacteristicsResult>** operation) override;
    void Shut() override { mark.Close(); }
    bool IsShut() const override { return mark.IsClosed(); }

    const Device record;
    const std::size_t position;
    OpenMark mark;
};

class SimulatedGattCharacteristic final : public objects::CharacteristicObject,
                                          public NotificationSource {
  public:
    explicit SimulatedGattCharacteristic(const objects::Ref<SimulatedGattDeviceService>& owner);

    bool IsOpen() const override { return HasOpenService(); }
    bool IsNotifying() const REQUIRES(worldMutex) override { return notifying && IsOpen(); }

  private:
    HRESULT Write(const objects::Ref<objects::MemoryBuffer>& block,
                  IAsyncOperation<GattCommunicationStatus>** operation) override;
    HRESULT EnableNotifications(bool on,
                                IAsyncOperation<GattCommunicationStatus>** operation) override;
    EventRegistrationToken AddHandler(
        objects::SharedHandler<objects::ValueChangedHandler> handler) override;

    const Device record;
    bool notifying GUARDED_BY(worldMutex) = false;
};

using SimulatedServicesResult = objects::ServicesResult<SimulatedGattDeviceService>;
using SimulatedCharacteristicsResult = objects::CharacteristicsResult<SimulatedGattCharacteristic>;

// Return a result with the services or characteristics that have this UUID. `answer` can replace
// the status and empty the list.
objects::Ref<SimulatedServicesResult> FindServices(
    const objects::Ref<SimulatedBluetoothLEDevice>& device, const GUID& uuid, const Answer& answer);
objects::Ref<SimulatedCharacteristicsResult> FindCharacteristics(
    const objects::Ref<SimulatedGattDeviceService>& service, const GUID& uuid,
    const Answer& answer);

}  // namespace orv::simulated
