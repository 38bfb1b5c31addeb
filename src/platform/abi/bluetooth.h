// Interfaces of Windows.Devices.Bluetooth: the adapter, and lookups of devices and services.
#pragma once

#include "platform/abi/gatt.h"
#include "platform/abi/radios.h"

namespace orv {

enum class BluetoothError : INT32 {
    Success = 0,
    RadioNotAvailable = 1,
    ResourceInUse = 2,
    DeviceNotConnected = 3,
    OtherError = 4,
    DisabledByPolicy = 5,
    NotSupported = 6,
    DisabledByUser = 7,
    ConsentRequired = 8,
    TransportNotSupported = 9
};

struct IBluetoothAdapter : IInspectable {
    static constexpr GUID Iid = Guid("7974f04c-5f7a-4a34-9225-a855f84b1a8b");
    virtual HRESULT get_DeviceId(HSTRING* value) = 0;
    virtual HRESULT get_BluetoothAddress(UINT64* value) = 0;
    virtual HRESULT get_IsClassicSupported(boolean* value) = 0;
    virtual HRESULT get_IsLowEnergySupported(boolean* value) = 0;
    virtual HRESULT get_IsPeripheralRoleSupported(boolean* value) = 0;
    virtual HRESULT get_IsCentralRoleSupported(boolean* value) = 0;
    virtual HRESULT get_IsAdvertisementOffloadSupported(boolean* value) = 0;
    virtual HRESULT GetRadioAsync(IAsyncOperation<Radio>** operation) = 0;
};

struct BluetoothAdapter {
    static constexpr char16_t Name[] = u"Windows.Devices.Bluetooth.BluetoothAdapter";
    using DefaultInterface = IBluetoothAdapter;
};

struct IBluetoothAdapterStatics : IInspectable {
    static constexpr GUID Iid = Guid("8b02fb6a-ac4c-4741-8661-8eab7d17ea9f");
    virtual HRESULT GetDeviceSelector(HSTRING* result) = 0;
    virtual HRESULT FromIdAsync(HSTRING deviceId,
                                IAsyncOperation<BluetoothAdapter>** operation) = 0;
    virtual HRESULT GetDefaultAsync(IAsyncOperation<BluetoothAdapter>** operation) = 0;
};

struct IBluetoothLEDevice3 : IInspectable {
    static constexpr GUID Iid = Guid("aee9e493-44ac-40dc-af33-b2c13c01ca46");
    virtual HRESULT get_DeviceAccessInformation(IDeviceAccessInformation** value) = 0;
    virtual HRESULT RequestAccessAsync(IAsyncOperation<DeviceAccessStatus>** operation) = 0;
    virtual HRESULT GetGattServicesAsync(IAsyncOperation<GattDeviceServicesResult>** operation) = 0;
    virtual HRESULT GetGattServicesWithCacheModeAsync(
        BluetoothCacheMode mode, IAsyncOperation<GattDeviceServicesResult>** operation) = 0;
    virtual HRESULT GetGattServicesForUuidAsync(
        GUID uuid, IAsyncOperation<GattDeviceServicesResult>** operation) = 0;
    virtual HRESULT GetGattServicesForUuidWithCacheModeAsync(
        GUID uuid, BluetoothCacheMode mode,
        IAsyncOperation<GattDeviceServicesResult>** operation) = 0;
};

struct IBluetoothLEDeviceStatics : IInspectable {
    static constexpr GUID Iid = Guid("c8cf1a19-f0b6-4bf0-8689-41303de2d9f4");
    virtual HRESULT FromIdAsync(HSTRING deviceId,
                                IAsyncOperation<BluetoothLEDevice>** operation) = 0;
    virtual HRESULT FromBluetoothAddressAsync(UINT64 address,
                                              IAsyncOperation<BluetoothLEDevice>** operation) = 0;
    virtual HRESULT GetDeviceSelector(HSTRING* result) = 0;
};

template <>
inline constexpr GUID IidOf<IAsyncOperation<BluetoothAdapter>> =
    Guid("46fce70c-6c07-5a3a-b775-26f99402553f");
template <>
inline constexpr GUID IidOf<IAsyncOperation<BluetoothLEDevice>> =
    Guid("375f9d67-74a2-5f91-a11d-169093718d41");
template <>
inline constexpr GUID IidOf<AsyncOperationCompletedHandler<BluetoothAdapter>> =
    Guid("10a10a88-90e0-511a-9a08-d75feb52a19f");
template <>
inline constexpr GUID IidOf<AsyncOperationCompletedHandler<BluetoothLEDevice>> =
    Guid("9156b79f-c54a-5277-8f8b-d2cc43c7e004");

}  // namespace orv
