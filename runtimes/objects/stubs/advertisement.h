#pragma once

#include "platform/abi/advertisement.h"
#include "runtimes/objects/observer.h"

namespace orv::objects {

template <>
struct Stub<IBluetoothLEAdvertisementDataSection> : IBluetoothLEAdvertisementDataSection {
    HRESULT get_DataType(BYTE*) override {
        return Unexpected("BluetoothLEAdvertisementDataSection", "get_DataType");
    }
    HRESULT put_DataType(BYTE) override {
        return Unexpected("BluetoothLEAdvertisementDataSection", "put_DataType");
    }
    HRESULT get_Data(IBuffer**) override {
        return Unexpected("BluetoothLEAdvertisementDataSection", "get_Data");
    }
    HRESULT put_Data(IBuffer*) override {
        return Unexpected("BluetoothLEAdvertisementDataSection", "put_Data");
    }
};

template <>
struct Stub<IBluetoothLEAdvertisement> : IBluetoothLEAdvertisement {
    HRESULT get_Flags(IReference<BluetoothLEAdvertisementFlags>**) override {
        return Unexpected("BluetoothLEAdvertisement", "get_Flags");
    }
    HRESULT put_Flags(IReference<BluetoothLEAdvertisementFlags>*) override {
        return Unexpected("BluetoothLEAdvertisement", "put_Flags");
    }
    HRESULT get_LocalName(HSTRING*) override {
        return Unexpected("BluetoothLEAdvertisement", "get_LocalName");
    }
    HRESULT put_LocalName(HSTRING) override {
        return Unexpected("BluetoothLEAdvertisement", "put_LocalName");
    }
    HRESULT get_ServiceUuids(IVector<GUID>**) override {
        return Unexpected("BluetoothLEAdvertisement", "get_ServiceUuids");
    }
    HRESULT get_ManufacturerData(IVector<BluetoothLEManufacturerData>**) override {
        return Unexpected("BluetoothLEAdvertisement", "get_ManufacturerData");
    }
    HRESULT get_DataSections(IVector<BluetoothLEAdvertisementDataSection>**) override {
        return Unexpected("BluetoothLEAdvertisement", "get_DataSections");
    }
    HRESULT GetManufacturerDataByCompanyId(UINT16,
                                           IVectorView<BluetoothLEManufacturerData>**) override {
        return Unexpected("BluetoothLEAdvertisement", "GetManufacturerDataByCompanyId");
    }
    HRESULT GetSectionsByType(BYTE, IVectorView<BluetoothLEAdvertisementDataSection>**) override {
        return Unexpected("BluetoothLEAdvertisement", "GetSectionsByType");
    }
};

template <>
struct Stub<IBluetoothLEAdvertisementReceivedEventArgs>
    : IBluetoothLEAdvertisementReceivedEventArgs {
    HRESULT get_RawSignalStrengthInDBm(INT16*) override {
        return Unexpected("BluetoothLEAdvertisementReceivedEventArgs",
                          "get_RawSignalStrengthInDBm");
    }
    HRESULT get_BluetoothAddress(UINT64*) override {
        return Unexpected("BluetoothLEAdvertisementReceivedEventArgs", "get_BluetoothAddress");
    }
    HRESULT get_AdvertisementType(BluetoothLEAdvertisementType*) override {
        return Unexpected("BluetoothLEAdvertisementReceivedEventArgs", "get_AdvertisementType");
    }
    HRESULT get_Timestamp(DateTime*) override {
        return Unexpected("BluetoothLEAdvertisementReceivedEventArgs", "get_Timestamp");
    }
    HRESULT get_Advertisement(IBluetoothLEAdvertisement**) override {
        return Unexpected("BluetoothLEAdvertisementReceivedEventArgs", "get_Advertisement");
    }
};

template <>
struct Stub<IBluetoothLEAdvertisementReceivedEventArgs2>
    : IBluetoothLEAdvertisementReceivedEventArgs2 {
    HRESULT get_BluetoothAddressType(BluetoothAddressType*) override {
        return Unexpected("BluetoothLEAdvertisementReceivedEventArgs", "get_BluetoothAddressType");
    }
    HRESULT get_TransmitPowerLevelInDBm(IReference<INT16>**) override {
        return Unexpected("BluetoothLEAdvertisementReceivedEventArgs",
                          "get_TransmitPowerLevelInDBm");
    }
    HRESULT get_IsAnonymous(boolean*) override {
        return Unexpected("BluetoothLEAdvertisementReceivedEventArgs", "get_IsAnonymous");
    }
    HRESULT get_IsConnectable(boolean*) override {
        return Unexpected("BluetoothLEAdvertisementReceivedEventArgs", "get_IsConnectable");
    }
    HRESULT get_IsScannable(boolean*) override {
        return Unexpected("BluetoothLEAdvertisementReceivedEventArgs", "get_IsScannable");
    }
    HRESULT get_IsDirected(boolean*) override {
        return Unexpected("BluetoothLEAdvertisementReceivedEventArgs", "get_IsDirected");
    }
    HRESULT get_IsScanResponse(boolean*) override {
        return Unexpected("BluetoothLEAdvertisementReceivedEventArgs", "get_IsScanResponse");
    }
};

template <>
struct Stub<IBluetoothLEAdvertisementWatcher> : IBluetoothLEAdvertisementWatcher {
    HRESULT get_MinSamplingInterval(TimeSpan*) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "get_MinSamplingInterval");
    }
    HRESULT get_MaxSamplingInterval(TimeSpan*) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "get_MaxSamplingInterval");
    }
    HRESULT get_MinOutOfRangeTimeout(TimeSpan*) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "get_MinOutOfRangeTimeout");
    }
    HRESULT get_MaxOutOfRangeTimeout(TimeSpan*) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "get_MaxOutOfRangeTimeout");
    }
    HRESULT get_Status(BluetoothLEAdvertisementWatcherStatus*) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "get_Status");
    }
    HRESULT get_ScanningMode(BluetoothLEScanningMode*) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "get_ScanningMode");
    }
    HRESULT put_ScanningMode(BluetoothLEScanningMode) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "put_ScanningMode");
    }
    HRESULT get_SignalStrengthFilter(IBluetoothSignalStrengthFilter**) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "get_SignalStrengthFilter");
    }
    HRESULT put_SignalStrengthFilter(IBluetoothSignalStrengthFilter*) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "put_SignalStrengthFilter");
    }
    HRESULT get_AdvertisementFilter(IBluetoothLEAdvertisementFilter**) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "get_AdvertisementFilter");
    }
    HRESULT put_AdvertisementFilter(IBluetoothLEAdvertisementFilter*) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "put_AdvertisementFilter");
    }
    HRESULT Start() override { return Unexpected("BluetoothLEAdvertisementWatcher", "Start"); }
    HRESULT Stop() override { return Unexpected("BluetoothLEAdvertisementWatcher", "Stop"); }
    HRESULT add_Received(TypedEventHandler<BluetoothLEAdvertisementWatcher,
                                           BluetoothLEAdvertisementReceivedEventArgs>*,
                         EventRegistrationToken*) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "add_Received");
    }
    HRESULT remove_Received(EventRegistrationToken) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "remove_Received");
    }
    HRESULT add_Stopped(TypedEventHandler<BluetoothLEAdvertisementWatcher,
                                          BluetoothLEAdvertisementWatcherStoppedEventArgs>*,
                        EventRegistrationToken*) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "add_Stopped");
    }
    HRESULT remove_Stopped(EventRegistrationToken) override {
        return Unexpected("BluetoothLEAdvertisementWatcher", "remove_Stopped");
    }
};

}  // namespace orv::objects
