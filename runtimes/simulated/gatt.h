// Services and characteristics of a device that the library has found.
#pragma once

#include "runtimes/objects/buffer.h"
#include "runtimes/objects/vector.h"
#include "runtimes/simulated/device.h"

namespace orv::simulated {

using ValueChangedHandler = TypedEventHandler<GattCharacteristic, GattValueChangedEventArgs>;

class SimulatedGattDeviceService final
    : public objects::Object<objects::Stub<IGattDeviceService>, objects::Stub<IGattDeviceService2>,
                             objects::Stub<IGattDeviceService3>, IClosable> {
  public:
    // `index`: of the service in the device's record.
    SimulatedGattDeviceService(objects::Ref<SimulatedBluetoothLEDevice> owner, std::size_t index);

    const Device& Record() const { return device->Record(); }
    std::size_t Index() const { return position; }
    // Nothing can be started any more on it, nor on what belongs to it.
    bool IsClosed() const { return mark.IsClosed() || device->IsClosed(); }

    HRESULT get_Device(IBluetoothLEDevice** value) override;
    HRESULT RequestAccessAsync(IAsyncOperation<DeviceAccessStatus>** operation) override;
    HRESULT GetCharacteristicsForUuidWithCacheModeAsync(
        GUID uuid, BluetoothCacheMode mode,
        IAsyncOperation<GattCharacteristicsResult>** operation) override;
    HRESULT Close() override;

  private:
    void GivenOut() noexcept override { mark.Open(); }

    const objects::Ref<SimulatedBluetoothLEDevice> device;
    const std::size_t position;
    OpenMark mark;
};

class SimulatedGattCharacteristic final
    : public objects::Object<objects::Stub<IGattCharacteristic>,
                             objects::Stub<IGattCharacteristic2>> {
  public:
    explicit SimulatedGattCharacteristic(objects::Ref<SimulatedGattDeviceService> owner);

    // Needs the world's mutex.
    bool IsNotifying(Guard&) const { return notifying && IsOpen(); }
    // Its link has not been closed.
    bool IsOpen() const { return !service->IsClosed(); }
    // Tells one handler of a new value. On a thread of the world.
    void Raise(const objects::SharedHandler<ValueChangedHandler>& handler,
               const std::vector<BYTE>& value);

    HRESULT get_Service(IGattDeviceService** value) override;
    HRESULT WriteValueAsync(IBuffer* value,
                            IAsyncOperation<GattCommunicationStatus>** operation) override;
    HRESULT WriteClientCharacteristicConfigurationDescriptorAsync(
        GattClientCharacteristicConfigurationDescriptorValue value,
        IAsyncOperation<GattCommunicationStatus>** operation) override;
    HRESULT add_ValueChanged(ValueChangedHandler* handler, EventRegistrationToken* token) override;

  private:
    const objects::Ref<SimulatedGattDeviceService> service;
    bool notifying = false;  // guarded by the world's mutex
};

// A handler of notifications, for ever.
struct Registration {
    objects::Ref<SimulatedGattCharacteristic> sender;
    objects::SharedHandler<ValueChangedHandler> handler;
    std::shared_ptr<Strand> strand;
};

class SimulatedGattValueChangedEventArgs final
    : public objects::Object<objects::Stub<IGattValueChangedEventArgs>> {
  public:
    explicit SimulatedGattValueChangedEventArgs(const std::vector<BYTE>& bytes);

    HRESULT get_CharacteristicValue(IBuffer** value) override;

  private:
    const objects::Ref<objects::MemoryBuffer> buffer;
};

class SimulatedGattDeviceServicesResult final
    : public objects::Object<objects::Stub<IGattDeviceServicesResult>> {
  public:
    using Services = objects::VectorView<GattDeviceService, SimulatedGattDeviceService>;

    SimulatedGattDeviceServicesResult(GattCommunicationStatus status, objects::Ref<Services> found);
    // What a lookup that is answered like this gives.
    static objects::Ref<SimulatedGattDeviceServicesResult> Find(
        const objects::Ref<SimulatedBluetoothLEDevice>& device, const GUID& uuid,
        const Answer& answer);

    HRESULT get_Status(GattCommunicationStatus* value) override;
    HRESULT get_Services(IVectorView<GattDeviceService>** value) override;

  private:
    const GattCommunicationStatus answered;
    const objects::Ref<Services> services;
};

class SimulatedGattCharacteristicsResult final
    : public objects::Object<objects::Stub<IGattCharacteristicsResult>> {
  public:
    using Characteristics = objects::VectorView<GattCharacteristic, SimulatedGattCharacteristic>;

    SimulatedGattCharacteristicsResult(GattCommunicationStatus status,
                                       objects::Ref<Characteristics> found);
    static objects::Ref<SimulatedGattCharacteristicsResult> Find(
        const objects::Ref<SimulatedGattDeviceService>& service, const GUID& uuid,
        const Answer& answer);

    HRESULT get_Status(GattCommunicationStatus* value) override;
    HRESULT get_Characteristics(IVectorView<GattCharacteristic>** value) override;

  private:
    const GattCommunicationStatus answered;
    const objects::Ref<Characteristics> characteristics;
};

}  // namespace orv::simulated
