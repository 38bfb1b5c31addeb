#pragma once

#include "platform/abi/streams.h"

namespace orv {

enum class BluetoothLEScanningMode : INT32 { Passive = 0, Active = 1, None = 2 };
enum class BluetoothLEAdvertisementType : INT32 {
    ConnectableUndirected = 0,
    ConnectableDirected = 1,
    ScannableUndirected = 2,
    NonConnectableUndirected = 3,
    ScanResponse = 4,
    Extended = 5
};
enum class BluetoothLEAdvertisementFlags : UINT32;
enum class BluetoothAddressType : INT32;
enum class BluetoothLEAdvertisementWatcherStatus : INT32;

struct BluetoothLEManufacturerData;
struct BluetoothLEAdvertisementDataSection;
struct BluetoothLEAdvertisementReceivedEventArgs;
struct BluetoothLEAdvertisementWatcher;
struct BluetoothLEAdvertisementWatcherStoppedEventArgs;
struct IBluetoothLEAdvertisementFilter;
struct IBluetoothSignalStrengthFilter;
template <typename T>
struct IReference;

struct IBluetoothLEAdvertisementDataSection : IInspectable {
    static constexpr GUID Iid = Guid("d7213314-3a43-40f9-b6f0-92bfefc34ae3");
    virtual HRESULT get_DataType(BYTE* value) = 0;
    virtual HRESULT put_DataType(BYTE value) = 0;
    virtual HRESULT get_Data(IBuffer** value) = 0;
    virtual HRESULT put_Data(IBuffer* value) = 0;
};

struct IBluetoothLEAdvertisement : IInspectable {
    static constexpr GUID Iid = Guid("066fb2b7-33d1-4e7d-8367-cf81d0f79653");
    virtual HRESULT get_Flags(IReference<BluetoothLEAdvertisementFlags>** value) = 0;
    virtual HRESULT put_Flags(IReference<BluetoothLEAdvertisementFlags>* value) = 0;
    virtual HRESULT get_LocalName(HSTRING* value) = 0;
    virtual HRESULT put_LocalName(HSTRING value) = 0;
    virtual HRESULT get_ServiceUuids(IVector<GUID>** value) = 0;
    virtual HRESULT get_ManufacturerData(IVector<BluetoothLEManufacturerData>** value) = 0;
    virtual HRESULT get_DataSections(IVector<BluetoothLEAdvertisementDataSection>** value) = 0;
    virtual HRESULT GetManufacturerDataByCompanyId(
        UINT16 companyId, IVectorView<BluetoothLEManufacturerData>** value) = 0;
    virtual HRESULT GetSectionsByType(BYTE type,
                                      IVectorView<BluetoothLEAdvertisementDataSection>** value) = 0;
};

struct IBluetoothLEAdvertisementReceivedEventArgs : IInspectable {
    static constexpr GUID Iid = Guid("27987ddf-e596-41be-8d43-9e6731d4a913");
    virtual HRESULT get_RawSignalStrengthInDBm(INT16* value) = 0;
    virtual HRESULT get_BluetoothAddress(UINT64* value) = 0;
    virtual HRESULT get_AdvertisementType(BluetoothLEAdvertisementType* value) = 0;
    virtual HRESULT get_Timestamp(DateTime* value) = 0;
    virtual HRESULT get_Advertisement(IBluetoothLEAdvertisement** value) = 0;
};

struct IBluetoothLEAdvertisementReceivedEventArgs2 : IInspectable {
    static constexpr GUID Iid = Guid("12d9c87b-0399-5f0e-a348-53b02b6b162e");
    virtual HRESULT get_BluetoothAddressType(BluetoothAddressType* value) = 0;
    virtual HRESULT get_TransmitPowerLevelInDBm(IReference<INT16>** value) = 0;
    virtual HRESULT get_IsAnonymous(boolean* value) = 0;
    virtual HRESULT get_IsConnectable(boolean* value) = 0;
    virtual HRESULT get_IsScannable(boolean* value) = 0;
    virtual HRESULT get_IsDirected(boolean* value) = 0;
    virtual HRESULT get_IsScanResponse(boolean* value) = 0;
};

struct IBluetoothLEAdvertisementWatcher : IInspectable {
    static constexpr GUID Iid = Guid("a6ac336f-f3d3-4297-8d6c-c81ea6623f40");
    virtual HRESULT get_MinSamplingInterval(TimeSpan* value) = 0;
    virtual HRESULT get_MaxSamplingInterval(TimeSpan* value) = 0;
    virtual HRESULT get_MinOutOfRangeTimeout(TimeSpan* value) = 0;
    virtual HRESULT get_MaxOutOfRangeTimeout(TimeSpan* value) = 0;
    virtual HRESULT get_Status(BluetoothLEAdvertisementWatcherStatus* value) = 0;
    virtual HRESULT get_ScanningMode(BluetoothLEScanningMode* value) = 0;
    virtual HRESULT put_ScanningMode(BluetoothLEScanningMode value) = 0;
    virtual HRESULT get_SignalStrengthFilter(IBluetoothSignalStrengthFilter** value) = 0;
    virtual HRESULT put_SignalStrengthFilter(IBluetoothSignalStrengthFilter* value) = 0;
    virtual HRESULT get_AdvertisementFilter(IBluetoothLEAdvertisementFilter** value) = 0;
    virtual HRESULT put_AdvertisementFilter(IBluetoothLEAdvertisementFilter* value) = 0;
    virtual HRESULT Start() = 0;
    virtual HRESULT Stop() = 0;
    virtual HRESULT add_Received(
        TypedEventHandler<BluetoothLEAdvertisementWatcher,
                          BluetoothLEAdvertisementReceivedEventArgs>* handler,
        EventRegistrationToken* token) = 0;
    virtual HRESULT remove_Received(EventRegistrationToken token) = 0;
    virtual HRESULT add_Stopped(
        TypedEventHandler<BluetoothLEAdvertisementWatcher,
                          BluetoothLEAdvertisementWatcherStoppedEventArgs>* handler,
        EventRegistrationToken* token) = 0;
    virtual HRESULT remove_Stopped(EventRegistrationToken token) = 0;
};

struct BluetoothLEAdvertisementDataSection {
    using DefaultInterface = IBluetoothLEAdvertisementDataSection;
};
struct BluetoothLEAdvertisementReceivedEventArgs {
    using DefaultInterface = IBluetoothLEAdvertisementReceivedEventArgs;
};
struct BluetoothLEAdvertisementWatcher {
    static constexpr char16_t Name[] =
        u"Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementWatcher";
    using DefaultInterface = IBluetoothLEAdvertisementWatcher;
};

template <>
inline constexpr GUID IidOf<IVector<BluetoothLEAdvertisementDataSection>> =
    Guid("b6f71ad2-e2cf-5d54-b6f1-90964ee5d4da");
template <>
inline constexpr GUID IidOf<
    TypedEventHandler<BluetoothLEAdvertisementWatcher, BluetoothLEAdvertisementReceivedEventArgs>> =
    Guid("90eb4eca-d465-5ea0-a61c-033c8c5ecef2");
template <>
inline constexpr GUID IidOf<IIterable<BluetoothLEAdvertisementDataSection>> =
    Guid("db98b5d1-897e-59cc-b86a-7b8855ac98af");
template <>
inline constexpr GUID IidOf<IIterator<BluetoothLEAdvertisementDataSection>> =
    Guid("af5c0e81-788b-52d4-82a2-1ed28c66a05e");

}  // namespace orv
