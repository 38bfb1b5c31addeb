// Base classes of devices, services and characteristics, which record calls and reject wrong
// arguments and closed objects. Each runtime implements the operations.
#pragma once

#include "runtimes/objects/buffer.h"
#include "runtimes/objects/handler.h"
#include "runtimes/objects/stubs/bluetooth.h"
#include "runtimes/objects/stubs/gatt.h"

namespace orv::objects {

using ValueChangedHandler = TypedEventHandler<GattCharacteristic, GattValueChangedEventArgs>;

class DeviceObject : public Object<Stub<IBluetoothLEDevice>, Stub<IBluetoothLEDevice3>, IClosable> {
  public:
    DeviceObject();

    virtual UINT64 Address() const = 0;
    virtual bool IsClosed() const = 0;

    HRESULT get_BluetoothAddress(UINT64* value) final;
    HRESULT GetGattServicesForUuidWithCacheModeAsync(
        GUID uuid, BluetoothCacheMode mode,
        IAsyncOperation<GattDeviceServicesResult>** operation) final;
    HRESULT Close() final;

  private:
    virtual HRESULT FindServices(const GUID& uuid,
                                 IAsyncOperation<GattDeviceServicesResult>** operation) = 0;
    // Every call of Close calls this function.
    virtual void Shut() = 0;
};

class ServiceObject : public Object<Stub<IGattDeviceService>, Stub<IGattDeviceService2>,
                                    Stub<IGattDeviceService3>, IClosable> {
  public:
    explicit ServiceObject(Ref<DeviceObject> owner);

    // A service is closed with its device. Operations on a closed service and on its
    // characteristics are rejected.
    bool IsClosed() const { return IsShut() || device->IsClosed(); }
    UINT64 Address() const { return device->Address(); }

    HRESULT get_Device(IBluetoothLEDevice** value) final;
    HRESULT RequestAccessAsync(IAsyncOperation<DeviceAccessStatus>** operation) final;
    HRESULT GetCharacteristicsForUuidWithCacheModeAsync(
        GUID uuid, BluetoothCacheMode mode,
        IAsyncOperation<GattCharacteristicsResult>** operation) final;
    HRESULT Close() final;

  private:
    virtual HRESULT RequestAccess(IAsyncOperation<DeviceAccessStatus>** operation) = 0;
    virtual HRESULT FindCharacteristics(const GUID& uuid,
                                        IAsyncOperation<GattCharacteristicsResult>** operation) = 0;
    virtual void Shut() = 0;
    virtual bool IsShut() const = 0;

    const Ref<DeviceObject> device;
};

class CharacteristicObject : public Object<Stub<IGattCharacteristic>, Stub<IGattCharacteristic2>> {
  public:
    explicit CharacteristicObject(Ref<ServiceObject> owner);

    bool HasOpenService() const { return !service->IsClosed(); }
    UINT64 Address() const { return service->Address(); }

    HRESULT get_Service(IGattDeviceService** value) final;
    HRESULT WriteValueAsync(IBuffer* value,
                            IAsyncOperation<GattCommunicationStatus>** operation) final;
    HRESULT WriteClientCharacteristicConfigurationDescriptorAsync(
        GattClientCharacteristicConfigurationDescriptorValue value,
        IAsyncOperation<GattCommunicationStatus>** operation) final;
    HRESULT add_ValueChanged(ValueChangedHandler* handler, EventRegistrationToken* token) final;

  private:
    virtual HRESULT Write(const Ref<MemoryBuffer>& block,
                          IAsyncOperation<GattCommunicationStatus>** operation) = 0;
    virtual HRESULT EnableNotifications(bool on,
                                        IAsyncOperation<GattCommunicationStatus>** operation) = 0;
    virtual EventRegistrationToken AddHandler(SharedHandler<ValueChangedHandler> handler) = 0;

    const Ref<ServiceObject> service;
};

Ref<Object<Stub<IGattValueChangedEventArgs>>> MakeValueChangedArgs(const std::vector<BYTE>& value);

}  // namespace orv::objects
