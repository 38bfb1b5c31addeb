#include "runtimes/objects/gatt.h"

#include "runtimes/objects/event.h"

namespace orv::objects {

namespace {

Class deviceClass("BluetoothLEDevice");
Member getBluetoothAddressMember(deviceClass.name, "get_BluetoothAddress");
Member findServicesMember(deviceClass.name, "GetGattServicesForUuidWithCacheModeAsync");
Member closeDeviceMember(deviceClass.name, "Close");
Class serviceClass("GattDeviceService");
Member getDeviceMember(serviceClass.name, "get_Device");
Member requestAccessAsyncMember(serviceClass.name, "RequestAccessAsync");
Member findCharacteristicsMember(serviceClass.name, "GetCharacteristicsForUuidWithCacheModeAsync");
Member closeServiceMember(serviceClass.name, "Close");
Class characteristicClass("GattCharacteristic");
Member getServiceMember(characteristicClass.name, "get_Service");
Member writeValueAsyncMember(characteristicClass.name, "WriteValueAsync");
Member writeDescriptorMember(characteristicClass.name,
                             "WriteClientCharacteristicConfigurationDescriptorAsync");
Member addValueChangedMember(characteristicClass.name, "add_ValueChanged");
Class valueChangedClass("GattValueChangedEventArgs");
Member getCharacteristicValueMember(valueChangedClass.name, "get_CharacteristicValue");

// Rejects lookups on closed objects, and cache modes that the library does not use.
template <typename Find>
HRESULT Lookup(Member& member, BluetoothCacheMode mode, bool isClosed, Find&& find) {
    return Call(member, Argument::Number(static_cast<UINT64>(mode)), [&] {
        if (mode != BluetoothCacheMode::Uncached) {
            return E_INVALIDARG;
        }
        return isClosed ? RO_E_CLOSED : find();
    });
}

class ValueChangedArgs final : public Object<Stub<IGattValueChangedEventArgs>> {
  public:
    explicit ValueChangedArgs(const std::vector<BYTE>& value)
        : Object(valueChangedClass), buffer(Make<MemoryBuffer>(value)) {}

    HRESULT get_CharacteristicValue(IBuffer** value) override {
        return Call(getCharacteristicValueMember, [&] { return Give(value, buffer); });
    }

  private:
    const Ref<MemoryBuffer> buffer;
};

}  // namespace

DeviceObject::DeviceObject() : Object(deviceClass) {}

HRESULT DeviceObject::get_BluetoothAddress(UINT64* value) {
    return Property(getBluetoothAddressMember, value, Address());
}

HRESULT DeviceObject::GetGattServicesForUuidWithCacheModeAsync(
    GUID uuid, BluetoothCacheMode mode, IAsyncOperation<GattDeviceServicesResult>** operation) {
    return Lookup(findServicesMember, mode, IsClosed(),
                  [&] { return FindServices(uuid, operation); });
}

HRESULT DeviceObject::Close() {
    return Call(closeDeviceMember, [&] {
        Shut();
        return S_OK;
    });
}

ServiceObject::ServiceObject(Ref<DeviceObject> owner)
    : Object(serviceClass), device(std::move(owner)) {}

HRESULT ServiceObject::get_Device(IBluetoothLEDevice** value) {
    return Call(getDeviceMember, [&] { return Give(value, device); });
}

HRESULT ServiceObject::RequestAccessAsync(IAsyncOperation<DeviceAccessStatus>** operation) {
    return Call(requestAccessAsyncMember,
                [&] { return IsClosed() ? RO_E_CLOSED : RequestAccess(operation); });
}

HRESULT ServiceObject::GetCharacteristicsForUuidWithCacheModeAsync(
    GUID uuid, BluetoothCacheMode mode, IAsyncOperation<GattCharacteristicsResult>** operation) {
    return Lookup(findCharacteristicsMember, mode, IsClosed(),
                  [&] { return FindCharacteristics(uuid, operation); });
}

HRESULT ServiceObject::Close() {
    return Call(closeServiceMember, [&] {
        Shut();
        return S_OK;
    });
}

CharacteristicObject::CharacteristicObject(Ref<ServiceObject> owner)
    : Object(characteristicClass), service(std::move(owner)) {}

HRESULT CharacteristicObject::get_Service(IGattDeviceService** value) {
    return Call(getServiceMember, [&] { return Give(value, service); });
}

HRESULT CharacteristicObject::WriteValueAsync(
    IBuffer* value, IAsyncOperation<GattCommunicationStatus>** operation) {
    return Call(writeValueAsyncMember, [&] {
        if (value == nullptr || !HasOpenService()) {
            return value == nullptr ? E_POINTER : RO_E_CLOSED;
        }
        const Ref<MemoryBuffer> block = MemoryBuffer::From(value);
        return block ? Write(block, operation) : E_INVALIDARG;
    });
}

HRESULT CharacteristicObject::WriteClientCharacteristicConfigurationDescriptorAsync(
    GattClientCharacteristicConfigurationDescriptorValue value,
    IAsyncOperation<GattCommunicationStatus>** operation) {
    return Call(writeDescriptorMember, Argument::Number(static_cast<UINT64>(value)), [&] {
        const bool on = value == GattClientCharacteristicConfigurationDescriptorValue::Notify;
        return HasOpenService() ? EnableNotifications(on, operation) : RO_E_CLOSED;
    });
}

HRESULT CharacteristicObject::add_ValueChanged(ValueChangedHandler* handler,
                                               EventRegistrationToken* token) {
    return Call(addValueChangedMember, [&] {
        return objects::AddHandler(handler, token,
                                   [&](auto taken) { return AddHandler(std::move(taken)); });
    });
}

Ref<Object<Stub<IGattValueChangedEventArgs>>> MakeValueChangedArgs(const std::vector<BYTE>& value) {
    return Ref<Object<Stub<IGattValueChangedEventArgs>>>(new ValueChangedArgs(value));
}

}  // namespace orv::objects
