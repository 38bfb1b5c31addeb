// Interfaces of Windows.Devices.Bluetooth.GenericAttributeProfile, and IBluetoothLEDevice.
#pragma once

#include "platform/abi/streams.h"

namespace orv {

enum class BluetoothCacheMode : INT32 { Cached = 0, Uncached = 1 };
enum class DeviceAccessStatus : INT32 {
    Unspecified = 0,
    Allowed = 1,
    DeniedByUser = 2,
    DeniedBySystem = 3
};
enum class GattCommunicationStatus : INT32 {
    Success = 0,
    Unreachable = 1,
    ProtocolError = 2,
    AccessDenied = 3
};
enum class GattClientCharacteristicConfigurationDescriptorValue : INT32 {
    None = 0,
    Notify = 1,
    Indicate = 2
};
enum class GattWriteOption : INT32 { WriteWithResponse = 0, WriteWithoutResponse = 1 };
enum class GattCharacteristicProperties : UINT32;
enum class BluetoothConnectionStatus : INT32;
enum class GattOpenStatus : INT32;
enum class GattProtectionLevel : INT32;
enum class GattSharingMode : INT32;

struct GattDescriptor;
struct GattDescriptorsResult;
struct GattPresentationFormat;
struct GattReadClientCharacteristicConfigurationDescriptorResult;
struct GattReadResult;
struct GattWriteResult;
struct IDeviceAccessInformation;
struct IGattSession;
struct BluetoothLEDevice;
struct GattCharacteristic;
struct GattCharacteristicsResult;
struct GattDeviceService;
struct GattDeviceServicesResult;
struct GattValueChangedEventArgs;
template <typename T>
struct IReference;

struct IGattDeviceService;
struct IBluetoothLEDevice : IInspectable {
    static constexpr GUID Iid = Guid("b5ee2f7b-4ad8-4642-ac48-80a0b500e887");
    virtual HRESULT get_DeviceId(HSTRING* value) = 0;
    virtual HRESULT get_Name(HSTRING* value) = 0;
    virtual HRESULT get_GattServices(IVectorView<GattDeviceService>** value) = 0;
    virtual HRESULT get_ConnectionStatus(BluetoothConnectionStatus* value) = 0;
    virtual HRESULT get_BluetoothAddress(UINT64* value) = 0;
    virtual HRESULT GetGattService(GUID uuid, IGattDeviceService** service) = 0;
    virtual HRESULT add_NameChanged(TypedEventHandler<BluetoothLEDevice, IInspectable>* handler,
                                    EventRegistrationToken* token) = 0;
    virtual HRESULT remove_NameChanged(EventRegistrationToken token) = 0;
    virtual HRESULT add_GattServicesChanged(
        TypedEventHandler<BluetoothLEDevice, IInspectable>* handler,
        EventRegistrationToken* token) = 0;
    virtual HRESULT remove_GattServicesChanged(EventRegistrationToken token) = 0;
    virtual HRESULT add_ConnectionStatusChanged(
        TypedEventHandler<BluetoothLEDevice, IInspectable>* handler,
        EventRegistrationToken* token) = 0;
    virtual HRESULT remove_ConnectionStatusChanged(EventRegistrationToken token) = 0;
};

struct IGattDeviceService : IInspectable {
    static constexpr GUID Iid = Guid("ac7b7c05-b33c-47cf-990f-6b8f5577df71");
    virtual HRESULT GetCharacteristics(GUID uuid, IVectorView<GattCharacteristic>** value) = 0;
    virtual HRESULT GetIncludedServices(GUID uuid, IVectorView<GattDeviceService>** value) = 0;
    virtual HRESULT get_DeviceId(HSTRING* value) = 0;
    virtual HRESULT get_Uuid(GUID* value) = 0;
    virtual HRESULT get_AttributeHandle(UINT16* value) = 0;
};

struct IGattDeviceService2 : IInspectable {
    static constexpr GUID Iid = Guid("fc54520b-0b0d-4708-bae0-9ffd9489bc59");
    virtual HRESULT get_Device(IBluetoothLEDevice** value) = 0;
    virtual HRESULT get_ParentServices(IVectorView<GattDeviceService>** value) = 0;
    virtual HRESULT GetAllCharacteristics(IVectorView<GattCharacteristic>** value) = 0;
    virtual HRESULT GetAllIncludedServices(IVectorView<GattDeviceService>** value) = 0;
};

struct IGattDeviceService3 : IInspectable {
    static constexpr GUID Iid = Guid("b293a950-0c53-437c-a9b3-5c3210c6e569");
    virtual HRESULT get_DeviceAccessInformation(IDeviceAccessInformation** value) = 0;
    virtual HRESULT get_Session(IGattSession** value) = 0;
    virtual HRESULT get_SharingMode(GattSharingMode* value) = 0;
    virtual HRESULT RequestAccessAsync(IAsyncOperation<DeviceAccessStatus>** operation) = 0;
    virtual HRESULT OpenAsync(GattSharingMode mode,
                              IAsyncOperation<GattOpenStatus>** operation) = 0;
    virtual HRESULT GetCharacteristicsAsync(
        IAsyncOperation<GattCharacteristicsResult>** operation) = 0;
    virtual HRESULT GetCharacteristicsWithCacheModeAsync(
        BluetoothCacheMode mode, IAsyncOperation<GattCharacteristicsResult>** operation) = 0;
    virtual HRESULT GetCharacteristicsForUuidAsync(
        GUID uuid, IAsyncOperation<GattCharacteristicsResult>** operation) = 0;
    virtual HRESULT GetCharacteristicsForUuidWithCacheModeAsync(
        GUID uuid, BluetoothCacheMode mode,
        IAsyncOperation<GattCharacteristicsResult>** operation) = 0;
    virtual HRESULT GetIncludedServicesAsync(
        IAsyncOperation<GattDeviceServicesResult>** operation) = 0;
    virtual HRESULT GetIncludedServicesWithCacheModeAsync(
        BluetoothCacheMode mode, IAsyncOperation<GattDeviceServicesResult>** operation) = 0;
    virtual HRESULT GetIncludedServicesForUuidAsync(
        GUID uuid, IAsyncOperation<GattDeviceServicesResult>** operation) = 0;
    virtual HRESULT GetIncludedServicesForUuidWithCacheModeAsync(
        GUID uuid, BluetoothCacheMode mode,
        IAsyncOperation<GattDeviceServicesResult>** operation) = 0;
};

struct IGattDeviceServicesResult : IInspectable {
    static constexpr GUID Iid = Guid("171dd3ee-016d-419d-838a-576cf475a3d8");
    virtual HRESULT get_Status(GattCommunicationStatus* value) = 0;
    virtual HRESULT get_ProtocolError(IReference<BYTE>** value) = 0;
    virtual HRESULT get_Services(IVectorView<GattDeviceService>** value) = 0;
};

struct IGattCharacteristic : IInspectable {
    static constexpr GUID Iid = Guid("59cb50c1-5934-4f68-a198-eb864fa44e6b");
    virtual HRESULT GetDescriptors(GUID uuid, IVectorView<GattDescriptor>** value) = 0;
    virtual HRESULT get_CharacteristicProperties(GattCharacteristicProperties* value) = 0;
    virtual HRESULT get_ProtectionLevel(GattProtectionLevel* value) = 0;
    virtual HRESULT put_ProtectionLevel(GattProtectionLevel value) = 0;
    virtual HRESULT get_UserDescription(HSTRING* value) = 0;
    virtual HRESULT get_Uuid(GUID* value) = 0;
    virtual HRESULT get_AttributeHandle(UINT16* value) = 0;
    virtual HRESULT get_PresentationFormats(IVectorView<GattPresentationFormat>** value) = 0;
    virtual HRESULT ReadValueAsync(IAsyncOperation<GattReadResult>** operation) = 0;
    virtual HRESULT ReadValueWithCacheModeAsync(BluetoothCacheMode mode,
                                                IAsyncOperation<GattReadResult>** operation) = 0;
    virtual HRESULT WriteValueAsync(IBuffer* value,
                                    IAsyncOperation<GattCommunicationStatus>** operation) = 0;
    virtual HRESULT WriteValueWithOptionAsync(
        IBuffer* value, GattWriteOption option,
        IAsyncOperation<GattCommunicationStatus>** operation) = 0;
    virtual HRESULT ReadClientCharacteristicConfigurationDescriptorAsync(
        IAsyncOperation<GattReadClientCharacteristicConfigurationDescriptorResult>** operation) = 0;
    virtual HRESULT WriteClientCharacteristicConfigurationDescriptorAsync(
        GattClientCharacteristicConfigurationDescriptorValue value,
        IAsyncOperation<GattCommunicationStatus>** operation) = 0;
    virtual HRESULT add_ValueChanged(
        TypedEventHandler<GattCharacteristic, GattValueChangedEventArgs>* handler,
        EventRegistrationToken* token) = 0;
    virtual HRESULT remove_ValueChanged(EventRegistrationToken token) = 0;
};

struct IGattCharacteristic2 : IInspectable {
    static constexpr GUID Iid = Guid("ae1ab578-ec06-4764-b780-9835a1d35d6e");
    virtual HRESULT get_Service(IGattDeviceService** value) = 0;
    virtual HRESULT GetAllDescriptors(IVectorView<GattDescriptor>** value) = 0;
};

struct IGattCharacteristic3 : IInspectable {
    static constexpr GUID Iid = Guid("3f3c663e-93d4-406b-b817-db81f8ed53b3");
    virtual HRESULT GetDescriptorsAsync(IAsyncOperation<GattDescriptorsResult>** operation) = 0;
    virtual HRESULT GetDescriptorsWithCacheModeAsync(
        BluetoothCacheMode mode, IAsyncOperation<GattDescriptorsResult>** operation) = 0;
    virtual HRESULT GetDescriptorsForUuidAsync(
        GUID uuid, IAsyncOperation<GattDescriptorsResult>** operation) = 0;
    virtual HRESULT GetDescriptorsForUuidWithCacheModeAsync(
        GUID uuid, BluetoothCacheMode mode, IAsyncOperation<GattDescriptorsResult>** operation) = 0;
    virtual HRESULT WriteValueWithResultAsync(IBuffer* value,
                                              IAsyncOperation<GattWriteResult>** operation) = 0;
    virtual HRESULT WriteValueWithResultAndOptionAsync(
        IBuffer* value, GattWriteOption option, IAsyncOperation<GattWriteResult>** operation) = 0;
    virtual HRESULT WriteClientCharacteristicConfigurationDescriptorWithResultAsync(
        GattClientCharacteristicConfigurationDescriptorValue value,
        IAsyncOperation<GattWriteResult>** operation) = 0;
};

struct IGattCharacteristicsResult : IInspectable {
    static constexpr GUID Iid = Guid("1194945c-b257-4f3e-9db7-f68bc9a9aef2");
    virtual HRESULT get_Status(GattCommunicationStatus* value) = 0;
    virtual HRESULT get_ProtocolError(IReference<BYTE>** value) = 0;
    virtual HRESULT get_Characteristics(IVectorView<GattCharacteristic>** value) = 0;
};

struct IGattValueChangedEventArgs : IInspectable {
    static constexpr GUID Iid = Guid("d21bdb54-06e3-4ed8-a263-acfac8ba7313");
    virtual HRESULT get_CharacteristicValue(IBuffer** value) = 0;
    virtual HRESULT get_Timestamp(DateTime* value) = 0;
};

struct BluetoothLEDevice {
    static constexpr char16_t Name[] = u"Windows.Devices.Bluetooth.BluetoothLEDevice";
    using DefaultInterface = IBluetoothLEDevice;
};
struct GattDeviceService {
    using DefaultInterface = IGattDeviceService;
};
struct GattDeviceServicesResult {
    using DefaultInterface = IGattDeviceServicesResult;
};
struct GattCharacteristic {
    using DefaultInterface = IGattCharacteristic;
};
struct GattCharacteristicsResult {
    using DefaultInterface = IGattCharacteristicsResult;
};
struct GattValueChangedEventArgs {
    using DefaultInterface = IGattValueChangedEventArgs;
};

template <>
inline constexpr GUID IidOf<IAsyncOperation<GattDeviceServicesResult>> =
    Guid("e7c667f6-e874-500f-86ff-760ca6f07a58");
template <>
inline constexpr GUID IidOf<IAsyncOperation<DeviceAccessStatus>> =
    Guid("c00bc2f2-a7f8-5f3f-80d1-2808ef6bca10");
template <>
inline constexpr GUID IidOf<IAsyncOperation<GattCharacteristicsResult>> =
    Guid("0972194a-ac1c-5536-9886-27e58a18f273");
template <>
inline constexpr GUID IidOf<IAsyncOperation<GattCommunicationStatus>> =
    Guid("3ff69516-1bfb-52e9-9ee6-e5cdb78e1683");
template <>
inline constexpr GUID IidOf<AsyncOperationCompletedHandler<GattDeviceServicesResult>> =
    Guid("74ab0892-a631-5d6c-b1b4-bd2e1a741a9b");
template <>
inline constexpr GUID IidOf<AsyncOperationCompletedHandler<DeviceAccessStatus>> =
    Guid("ee154d83-805b-53e8-8469-90715036d013");
template <>
inline constexpr GUID IidOf<AsyncOperationCompletedHandler<GattCharacteristicsResult>> =
    Guid("d6a15475-1e72-5c56-98e8-88f4bc3e0313");
template <>
inline constexpr GUID IidOf<AsyncOperationCompletedHandler<GattCommunicationStatus>> =
    Guid("2154117a-978d-59db-99cf-6b690cb3389b");
template <>
inline constexpr GUID IidOf<IVectorView<GattDeviceService>> =
    Guid("7c8e7fdd-a1a1-528a-81d1-296769227a08");
template <>
inline constexpr GUID IidOf<IVectorView<GattCharacteristic>> =
    Guid("cb3ab3ae-b561-504f-a808-599deceb2df4");
template <>
inline constexpr GUID IidOf<TypedEventHandler<GattCharacteristic, GattValueChangedEventArgs>> =
    Guid("c1f420f6-6292-5760-a2c9-9ddf98683cfc");
template <>
inline constexpr GUID IidOf<IIterable<GattDeviceService>> =
    Guid("4b192e23-4893-56b2-8eff-439c3ab7fd1f");
template <>
inline constexpr GUID IidOf<IIterator<GattDeviceService>> =
    Guid("8beb3a26-73ca-50f3-a1d3-418c60a9f3b2");
template <>
inline constexpr GUID IidOf<IIterable<GattCharacteristic>> =
    Guid("e3c56728-7f2d-5a0d-ad38-030d39c60f9f");
template <>
inline constexpr GUID IidOf<IIterator<GattCharacteristic>> =
    Guid("1ffc4777-4346-5564-b7a5-59eae385f4f6");

}  // namespace orv
