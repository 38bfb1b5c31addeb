#pragma once

#include "platform/abi/gatt.h"
#include "runtimes/objects/observer.h"

namespace orv::objects {

template <>
struct Stub<IBluetoothLEDevice> : IBluetoothLEDevice {
    HRESULT get_DeviceId(HSTRING*) override {
        return Unexpected("BluetoothLEDevice", "get_DeviceId");
    }
    HRESULT get_Name(HSTRING*) override { return Unexpected("BluetoothLEDevice", "get_Name"); }
    HRESULT get_GattServices(IVectorView<GattDeviceService>**) override {
        return Unexpected("BluetoothLEDevice", "get_GattServices");
    }
    HRESULT get_ConnectionStatus(BluetoothConnectionStatus*) override {
        return Unexpected("BluetoothLEDevice", "get_ConnectionStatus");
    }
    HRESULT get_BluetoothAddress(UINT64*) override {
        return Unexpected("BluetoothLEDevice", "get_BluetoothAddress");
    }
    HRESULT GetGattService(GUID, IGattDeviceService**) override {
        return Unexpected("BluetoothLEDevice", "GetGattService");
    }
    HRESULT add_NameChanged(TypedEventHandler<BluetoothLEDevice, IInspectable>*,
                            EventRegistrationToken*) override {
        return Unexpected("BluetoothLEDevice", "add_NameChanged");
    }
    HRESULT remove_NameChanged(EventRegistrationToken) override {
        return Unexpected("BluetoothLEDevice", "remove_NameChanged");
    }
    HRESULT add_GattServicesChanged(TypedEventHandler<BluetoothLEDevice, IInspectable>*,
                                    EventRegistrationToken*) override {
        return Unexpected("BluetoothLEDevice", "add_GattServicesChanged");
    }
    HRESULT remove_GattServicesChanged(EventRegistrationToken) override {
        return Unexpected("BluetoothLEDevice", "remove_GattServicesChanged");
    }
    HRESULT add_ConnectionStatusChanged(TypedEventHandler<BluetoothLEDevice, IInspectable>*,
                                        EventRegistrationToken*) override {
        return Unexpected("BluetoothLEDevice", "add_ConnectionStatusChanged");
    }
    HRESULT remove_ConnectionStatusChanged(EventRegistrationToken) override {
        return Unexpected("BluetoothLEDevice", "remove_ConnectionStatusChanged");
    }
};

template <>
struct Stub<IGattDeviceService> : IGattDeviceService {
    HRESULT GetCharacteristics(GUID, IVectorView<GattCharacteristic>**) override {
        return Unexpected("GattDeviceService", "GetCharacteristics");
    }
    HRESULT GetIncludedServices(GUID, IVectorView<GattDeviceService>**) override {
        return Unexpected("GattDeviceService", "GetIncludedServices");
    }
    HRESULT get_DeviceId(HSTRING*) override {
        return Unexpected("GattDeviceService", "get_DeviceId");
    }
    HRESULT get_Uuid(GUID*) override { return Unexpected("GattDeviceService", "get_Uuid"); }
    HRESULT get_AttributeHandle(UINT16*) override {
        return Unexpected("GattDeviceService", "get_AttributeHandle");
    }
};

template <>
struct Stub<IGattDeviceService2> : IGattDeviceService2 {
    HRESULT get_Device(IBluetoothLEDevice**) override {
        return Unexpected("GattDeviceService", "get_Device");
    }
    HRESULT get_ParentServices(IVectorView<GattDeviceService>**) override {
        return Unexpected("GattDeviceService", "get_ParentServices");
    }
    HRESULT GetAllCharacteristics(IVectorView<GattCharacteristic>**) override {
        return Unexpected("GattDeviceService", "GetAllCharacteristics");
    }
    HRESULT GetAllIncludedServices(IVectorView<GattDeviceService>**) override {
        return Unexpected("GattDeviceService", "GetAllIncludedServices");
    }
};

template <>
struct Stub<IGattDeviceService3> : IGattDeviceService3 {
    HRESULT get_DeviceAccessInformation(IDeviceAccessInformation**) override {
        return Unexpected("GattDeviceService", "get_DeviceAccessInformation");
    }
    HRESULT get_Session(IGattSession**) override {
        return Unexpected("GattDeviceService", "get_Session");
    }
    HRESULT get_SharingMode(GattSharingMode*) override {
        return Unexpected("GattDeviceService", "get_SharingMode");
    }
    HRESULT RequestAccessAsync(IAsyncOperation<DeviceAccessStatus>**) override {
        return Unexpected("GattDeviceService", "RequestAccessAsync");
    }
    HRESULT OpenAsync(GattSharingMode, IAsyncOperation<GattOpenStatus>**) override {
        return Unexpected("GattDeviceService", "OpenAsync");
    }
    HRESULT GetCharacteristicsAsync(IAsyncOperation<GattCharacteristicsResult>**) override {
        return Unexpected("GattDeviceService", "GetCharacteristicsAsync");
    }
    HRESULT GetCharacteristicsWithCacheModeAsync(
        BluetoothCacheMode, IAsyncOperation<GattCharacteristicsResult>**) override {
        return Unexpected("GattDeviceService", "GetCharacteristicsWithCacheModeAsync");
    }
    HRESULT GetCharacteristicsForUuidAsync(GUID,
                                           IAsyncOperation<GattCharacteristicsResult>**) override {
        return Unexpected("GattDeviceService", "GetCharacteristicsForUuidAsync");
    }
    HRESULT GetCharacteristicsForUuidWithCacheModeAsync(
        GUID, BluetoothCacheMode, IAsyncOperation<GattCharacteristicsResult>**) override {
        return Unexpected("GattDeviceService", "GetCharacteristicsForUuidWithCacheModeAsync");
    }
    HRESULT GetIncludedServicesAsync(IAsyncOperation<GattDeviceServicesResult>**) override {
        return Unexpected("GattDeviceService", "GetIncludedServicesAsync");
    }
    HRESULT GetIncludedServicesWithCacheModeAsync(
        BluetoothCacheMode, IAsyncOperation<GattDeviceServicesResult>**) override {
        return Unexpected("GattDeviceService", "GetIncludedServicesWithCacheModeAsync");
    }
    HRESULT GetIncludedServicesForUuidAsync(GUID,
                                            IAsyncOperation<GattDeviceServicesResult>**) override {
        return Unexpected("GattDeviceService", "GetIncludedServicesForUuidAsync");
    }
    HRESULT GetIncludedServicesForUuidWithCacheModeAsync(
        GUID, BluetoothCacheMode, IAsyncOperation<GattDeviceServicesResult>**) override {
        return Unexpected("GattDeviceService", "GetIncludedServicesForUuidWithCacheModeAsync");
    }
};

template <>
struct Stub<IGattDeviceServicesResult> : IGattDeviceServicesResult {
    HRESULT get_Status(GattCommunicationStatus*) override {
        return Unexpected("GattDeviceServicesResult", "get_Status");
    }
    HRESULT get_ProtocolError(IReference<BYTE>**) override {
        return Unexpected("GattDeviceServicesResult", "get_ProtocolError");
    }
    HRESULT get_Services(IVectorView<GattDeviceService>**) override {
        return Unexpected("GattDeviceServicesResult", "get_Services");
    }
};

template <>
struct Stub<IGattCharacteristic> : IGattCharacteristic {
    HRESULT GetDescriptors(GUID, IVectorView<GattDescriptor>**) override {
        return Unexpected("GattCharacteristic", "GetDescriptors");
    }
    HRESULT get_CharacteristicProperties(GattCharacteristicProperties*) override {
        return Unexpected("GattCharacteristic", "get_CharacteristicProperties");
    }
    HRESULT get_ProtectionLevel(GattProtectionLevel*) override {
        return Unexpected("GattCharacteristic", "get_ProtectionLevel");
    }
    HRESULT put_ProtectionLevel(GattProtectionLevel) override {
        return Unexpected("GattCharacteristic", "put_ProtectionLevel");
    }
    HRESULT get_UserDescription(HSTRING*) override {
        return Unexpected("GattCharacteristic", "get_UserDescription");
    }
    HRESULT get_Uuid(GUID*) override { return Unexpected("GattCharacteristic", "get_Uuid"); }
    HRESULT get_AttributeHandle(UINT16*) override {
        return Unexpected("GattCharacteristic", "get_AttributeHandle");
    }
    HRESULT get_PresentationFormats(IVectorView<GattPresentationFormat>**) override {
        return Unexpected("GattCharacteristic", "get_PresentationFormats");
    }
    HRESULT ReadValueAsync(IAsyncOperation<GattReadResult>**) override {
        return Unexpected("GattCharacteristic", "ReadValueAsync");
    }
    HRESULT ReadValueWithCacheModeAsync(BluetoothCacheMode,
                                        IAsyncOperation<GattReadResult>**) override {
        return Unexpected("GattCharacteristic", "ReadValueWithCacheModeAsync");
    }
    HRESULT WriteValueAsync(IBuffer*, IAsyncOperation<GattCommunicationStatus>**) override {
        return Unexpected("GattCharacteristic", "WriteValueAsync");
    }
    HRESULT WriteValueWithOptionAsync(IBuffer*, GattWriteOption,
                                      IAsyncOperation<GattCommunicationStatus>**) override {
        return Unexpected("GattCharacteristic", "WriteValueWithOptionAsync");
    }
    HRESULT ReadClientCharacteristicConfigurationDescriptorAsync(
        IAsyncOperation<GattReadClientCharacteristicConfigurationDescriptorResult>**) override {
        return Unexpected("GattCharacteristic",
                          "ReadClientCharacteristicConfigurationDescriptorAsync");
    }
    HRESULT WriteClientCharacteristicConfigurationDescriptorAsync(
        GattClientCharacteristicConfigurationDescriptorValue,
        IAsyncOperation<GattCommunicationStatus>**) override {
        return Unexpected("GattCharacteristic",
                          "WriteClientCharacteristicConfigurationDescriptorAsync");
    }
    HRESULT add_ValueChanged(TypedEventHandler<GattCharacteristic, GattValueChangedEventArgs>*,
                             EventRegistrationToken*) override {
        return Unexpected("GattCharacteristic", "add_ValueChanged");
    }
    HRESULT remove_ValueChanged(EventRegistrationToken) override {
        return Unexpected("GattCharacteristic", "remove_ValueChanged");
    }
};

template <>
struct Stub<IGattCharacteristic2> : IGattCharacteristic2 {
    HRESULT get_Service(IGattDeviceService**) override {
        return Unexpected("GattCharacteristic", "get_Service");
    }
    HRESULT GetAllDescriptors(IVectorView<GattDescriptor>**) override {
        return Unexpected("GattCharacteristic", "GetAllDescriptors");
    }
};

template <>
struct Stub<IGattCharacteristic3> : IGattCharacteristic3 {
    HRESULT GetDescriptorsAsync(IAsyncOperation<GattDescriptorsResult>**) override {
        return Unexpected("GattCharacteristic", "GetDescriptorsAsync");
    }
    HRESULT GetDescriptorsWithCacheModeAsync(BluetoothCacheMode,
                                             IAsyncOperation<GattDescriptorsResult>**) override {
        return Unexpected("GattCharacteristic", "GetDescriptorsWithCacheModeAsync");
    }
    HRESULT GetDescriptorsForUuidAsync(GUID, IAsyncOperation<GattDescriptorsResult>**) override {
        return Unexpected("GattCharacteristic", "GetDescriptorsForUuidAsync");
    }
    HRESULT GetDescriptorsForUuidWithCacheModeAsync(
        GUID, BluetoothCacheMode, IAsyncOperation<GattDescriptorsResult>**) override {
        return Unexpected("GattCharacteristic", "GetDescriptorsForUuidWithCacheModeAsync");
    }
    HRESULT WriteValueWithResultAsync(IBuffer*, IAsyncOperation<GattWriteResult>**) override {
        return Unexpected("GattCharacteristic", "WriteValueWithResultAsync");
    }
    HRESULT WriteValueWithResultAndOptionAsync(IBuffer*, GattWriteOption,
                                               IAsyncOperation<GattWriteResult>**) override {
        return Unexpected("GattCharacteristic", "WriteValueWithResultAndOptionAsync");
    }
    HRESULT WriteClientCharacteristicConfigurationDescriptorWithResultAsync(
        GattClientCharacteristicConfigurationDescriptorValue,
        IAsyncOperation<GattWriteResult>**) override {
        return Unexpected("GattCharacteristic",
                          "WriteClientCharacteristicConfigurationDescriptorWithResultAsync");
    }
};

template <>
struct Stub<IGattCharacteristicsResult> : IGattCharacteristicsResult {
    HRESULT get_Status(GattCommunicationStatus*) override {
        return Unexpected("GattCharacteristicsResult", "get_Status");
    }
    HRESULT get_ProtocolError(IReference<BYTE>**) override {
        return Unexpected("GattCharacteristicsResult", "get_ProtocolError");
    }
    HRESULT get_Characteristics(IVectorView<GattCharacteristic>**) override {
        return Unexpected("GattCharacteristicsResult", "get_Characteristics");
    }
};

template <>
struct Stub<IGattValueChangedEventArgs> : IGattValueChangedEventArgs {
    HRESULT get_CharacteristicValue(IBuffer**) override {
        return Unexpected("GattValueChangedEventArgs", "get_CharacteristicValue");
    }
    HRESULT get_Timestamp(DateTime*) override {
        return Unexpected("GattValueChangedEventArgs", "get_Timestamp");
    }
};

}  // namespace orv::objects
