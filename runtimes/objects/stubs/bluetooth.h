#pragma once

#include "platform/abi/bluetooth.h"
#include "runtimes/objects/observer.h"

namespace orv::objects {

template <>
struct Stub<IBluetoothAdapter> : IBluetoothAdapter {
    HRESULT get_DeviceId(HSTRING*) override {
        return Unexpected("BluetoothAdapter", "get_DeviceId");
    }
    HRESULT get_BluetoothAddress(UINT64*) override {
        return Unexpected("BluetoothAdapter", "get_BluetoothAddress");
    }
    HRESULT get_IsClassicSupported(boolean*) override {
        return Unexpected("BluetoothAdapter", "get_IsClassicSupported");
    }
    HRESULT get_IsLowEnergySupported(boolean*) override {
        return Unexpected("BluetoothAdapter", "get_IsLowEnergySupported");
    }
    HRESULT get_IsPeripheralRoleSupported(boolean*) override {
        return Unexpected("BluetoothAdapter", "get_IsPeripheralRoleSupported");
    }
    HRESULT get_IsCentralRoleSupported(boolean*) override {
        return Unexpected("BluetoothAdapter", "get_IsCentralRoleSupported");
    }
    HRESULT get_IsAdvertisementOffloadSupported(boolean*) override {
        return Unexpected("BluetoothAdapter", "get_IsAdvertisementOffloadSupported");
    }
    HRESULT GetRadioAsync(IAsyncOperation<Radio>**) override {
        return Unexpected("BluetoothAdapter", "GetRadioAsync");
    }
};

template <>
struct Stub<IBluetoothAdapterStatics> : IBluetoothAdapterStatics {
    HRESULT GetDeviceSelector(HSTRING*) override {
        return Unexpected("BluetoothAdapter", "GetDeviceSelector");
    }
    HRESULT FromIdAsync(HSTRING, IAsyncOperation<BluetoothAdapter>**) override {
        return Unexpected("BluetoothAdapter", "FromIdAsync");
    }
    HRESULT GetDefaultAsync(IAsyncOperation<BluetoothAdapter>**) override {
        return Unexpected("BluetoothAdapter", "GetDefaultAsync");
    }
};

template <>
struct Stub<IBluetoothLEDevice3> : IBluetoothLEDevice3 {
    HRESULT get_DeviceAccessInformation(IDeviceAccessInformation**) override {
        return Unexpected("BluetoothLEDevice", "get_DeviceAccessInformation");
    }
    HRESULT RequestAccessAsync(IAsyncOperation<DeviceAccessStatus>**) override {
        return Unexpected("BluetoothLEDevice", "RequestAccessAsync");
    }
    HRESULT GetGattServicesAsync(IAsyncOperation<GattDeviceServicesResult>**) override {
        return Unexpected("BluetoothLEDevice", "GetGattServicesAsync");
    }
    HRESULT GetGattServicesWithCacheModeAsync(
        BluetoothCacheMode, IAsyncOperation<GattDeviceServicesResult>**) override {
        return Unexpected("BluetoothLEDevice", "GetGattServicesWithCacheModeAsync");
    }
    HRESULT GetGattServicesForUuidAsync(GUID,
                                        IAsyncOperation<GattDeviceServicesResult>**) override {
        return Unexpected("BluetoothLEDevice", "GetGattServicesForUuidAsync");
    }
    HRESULT GetGattServicesForUuidWithCacheModeAsync(
        GUID, BluetoothCacheMode, IAsyncOperation<GattDeviceServicesResult>**) override {
        return Unexpected("BluetoothLEDevice", "GetGattServicesForUuidWithCacheModeAsync");
    }
};

template <>
struct Stub<IBluetoothLEDeviceStatics> : IBluetoothLEDeviceStatics {
    HRESULT FromIdAsync(HSTRING, IAsyncOperation<BluetoothLEDevice>**) override {
        return Unexpected("BluetoothLEDevice", "FromIdAsync");
    }
    HRESULT FromBluetoothAddressAsync(UINT64, IAsyncOperation<BluetoothLEDevice>**) override {
        return Unexpected("BluetoothLEDevice", "FromBluetoothAddressAsync");
    }
    HRESULT GetDeviceSelector(HSTRING*) override {
        return Unexpected("BluetoothLEDevice", "GetDeviceSelector");
    }
};

}  // namespace orv::objects
