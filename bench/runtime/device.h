#pragma once

#include <memory>

#include "bench/runtime/object.h"
#include "runtimes/objects/stubs/bluetooth.h"
#include "runtimes/objects/stubs/gatt.h"
#include "runtimes/objects/stubs/streams.h"

namespace orv::bench {

using objects::Stub;

class Bytes final : public Bare<Stub<IBuffer>, IBufferByteAccess> {
  public:
    Bytes(const BYTE* source, UINT32 count);

    HRESULT get_Length(UINT32* value) override;
    HRESULT Buffer(BYTE** value) override;

  private:
    struct Freed {
        void operator()(BYTE* memory) const { std::free(memory); }
    };
    const std::unique_ptr<BYTE, Freed> bytes;
    const UINT32 length;
};

class Reader final : public Bare<Stub<IDataReader>> {
  public:
    explicit Reader(IBuffer* source);
    ~Reader() override { buffer->Release(); }

    HRESULT get_UnconsumedBufferLength(UINT32* value) override;
    HRESULT ReadByte(BYTE* value) override;

  private:
    IBuffer* const buffer;
    const BYTE* position;
    const BYTE* end;
};

// A data writer that accepts one block.
class Writer final : public Bare<Stub<IDataWriter>> {
  public:
    HRESULT WriteBytes(UINT32 length, const BYTE* values) override;
    HRESULT DetachBuffer(IBuffer** buffer) override;

  private:
    Bytes* written = nullptr;
};

// The arguments of a notification, which can be delivered repeatedly.
class Notification final : public Bare<Stub<IGattValueChangedEventArgs>> {
  public:
    explicit Notification(UINT32 size);
    ~Notification() override { bytes->Release(); }

    HRESULT get_CharacteristicValue(IBuffer** value) override;

  private:
    Bytes* const bytes;
};

class Device;

class Characteristic final : public Bare<Stub<IGattCharacteristic>, Stub<IGattCharacteristic2>> {
  public:
    explicit Characteristic(Device& owner) : device(owner) {}

    HRESULT get_Service(IGattDeviceService** value) override;
    HRESULT WriteValueAsync(IBuffer* value,
                            IAsyncOperation<GattCommunicationStatus>** operation) override;
    HRESULT WriteClientCharacteristicConfigurationDescriptorAsync(
        GattClientCharacteristicConfigurationDescriptorValue value,
        IAsyncOperation<GattCommunicationStatus>** operation) override;
    HRESULT add_ValueChanged(TypedEventHandler<GattCharacteristic, GattValueChangedEventArgs>*,
                             EventRegistrationToken* token) override;

  private:
    Device& device;
};

class Characteristics final : public Bare<Stub<IGattCharacteristicsResult>> {
  public:
    explicit Characteristics(Characteristic* only) : list(only) {}

    HRESULT get_Status(GattCommunicationStatus* value) override;
    HRESULT get_Characteristics(IVectorView<GattCharacteristic>** value) override;

  private:
    OneItem<GattCharacteristic> list;
};

class Service final : public Bare<Stub<IGattDeviceService>, Stub<IGattDeviceService2>,
                                  Stub<IGattDeviceService3>, IClosable> {
  public:
    explicit Service(Device& owner) : device(owner) {}

    HRESULT get_Device(IBluetoothLEDevice** value) override;
    HRESULT RequestAccessAsync(IAsyncOperation<DeviceAccessStatus>** operation) override;
    HRESULT GetCharacteristicsForUuidWithCacheModeAsync(
        GUID uuid, BluetoothCacheMode mode,
        IAsyncOperation<GattCharacteristicsResult>** operation) override;
    HRESULT Close() override { return S_OK; }

  private:
    Device& device;
};

class Services final : public Bare<Stub<IGattDeviceServicesResult>> {
  public:
    explicit Services(Service* only) : list(only) {}

    HRESULT get_Status(GattCommunicationStatus* value) override;
    HRESULT get_Services(IVectorView<GattDeviceService>** value) override;

  private:
    OneItem<GattDeviceService> list;
};

// A device with its service and characteristic, which exist until the program ends.
class Device final : public Bare<Stub<IBluetoothLEDevice>, Stub<IBluetoothLEDevice3>, IClosable> {
  public:
    explicit Device(UINT64 ownAddress) : address(ownAddress) {}

    HRESULT get_BluetoothAddress(UINT64* value) override;
    HRESULT GetGattServicesForUuidWithCacheModeAsync(
        GUID uuid, BluetoothCacheMode mode,
        IAsyncOperation<GattDeviceServicesResult>** operation) override;
    HRESULT Close() override { return S_OK; }

    Service service{*this};
    Services services{&service};
    Characteristic characteristic{*this};
    Characteristics characteristics{&characteristic};

  private:
    const UINT64 address;
};

Device& DeviceOf(UINT64 address);

}  // namespace orv::bench
