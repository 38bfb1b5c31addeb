// OrvDevice_Connect and OrvDevice_Disconnect.
#include "frame/export_frame.h"
#include "link/connection_table.h"
#include "link/receive.h"
#include "platform/abi/bluetooth.h"
#include "platform/activation.h"
#include "platform/wait.h"

namespace orv {

namespace {

constexpr GUID LinkServiceUuid = Guid("4880c12c-fdcb-4077-8920-a450d7f9b907");
constexpr GUID LinkCharacteristicUuid = Guid("fec26ec4-6d71-4442-9f81-55bc21d658d6");

// Each of the following steps is refused, without raising anything, by an operation that does not
// complete in time or whose answer is not the one wanted. What it obtained stays in `link`.

bool FindDevice(DeviceLink& link) {
    const auto statics = FactoryOf<BluetoothLEDevice, IBluetoothLEDeviceStatics>();
    auto device = AwaitResult(
        Get(statics, &IBluetoothLEDeviceStatics::FromBluetoothAddressAsync, link.address),
        GattWaitLimitMs);
    if (!device || !*device) {
        return false;
    }
    link.device = std::move(*device);
    return true;
}

bool FindService(DeviceLink& link) {
    const auto result =
        AwaitResult(Get(link.device.As<IBluetoothLEDevice3>(),
                        &IBluetoothLEDevice3::GetGattServicesForUuidWithCacheModeAsync,
                        LinkServiceUuid, BluetoothCacheMode::Uncached),
                    GattWaitLimitMs);
    if (!result || !*result ||
        Get(*result, &IGattDeviceServicesResult::get_Status) != GattCommunicationStatus::Success) {
        return false;
    }
    const auto services = Get(*result, &IGattDeviceServicesResult::get_Services);
    link.service = Get(services, &IVectorView<GattDeviceService>::GetAt, UINT32{0});
    return static_cast<bool>(link.service);
}

bool RequestAccess(DeviceLink& link) {
    const auto access = AwaitResult(
        Get(link.service.As<IGattDeviceService3>(), &IGattDeviceService3::RequestAccessAsync),
        GattWaitLimitMs);
    return access == DeviceAccessStatus::Allowed;
}

bool FindCharacteristic(DeviceLink& link) {
    const auto result =
        AwaitResult(Get(link.service.As<IGattDeviceService3>(),
                        &IGattDeviceService3::GetCharacteristicsForUuidWithCacheModeAsync,
                        LinkCharacteristicUuid, BluetoothCacheMode::Uncached),
                    GattWaitLimitMs);
    if (!result || !*result ||
        Get(*result, &IGattCharacteristicsResult::get_Status) != GattCommunicationStatus::Success) {
        return false;
    }
    const auto characteristics = Get(*result, &IGattCharacteristicsResult::get_Characteristics);
    link.characteristic = Get(characteristics, &IVectorView<GattCharacteristic>::GetAt, UINT32{0});
    return static_cast<bool>(link.characteristic);
}

auto StartNotifyWrite(const DeviceLink& link,
                      GattClientCharacteristicConfigurationDescriptorValue value) {
    return Get(link.characteristic,
               &IGattCharacteristic::WriteClientCharacteristicConfigurationDescriptorAsync, value);
}

// The handler is registered first, so that no notification is missed once they are on. It stays
// registered for good: its token is dropped.
bool SwitchNotificationsOn(DeviceLink& link) {
    const auto handler =
        EventHandler<GattCharacteristic, GattValueChangedEventArgs>::Create(OnDataReceived);
    Get(link.characteristic, &IGattCharacteristic::add_ValueChanged, handler.Get());
    const auto status = AwaitResult(
        StartNotifyWrite(link, GattClientCharacteristicConfigurationDescriptorValue::Notify),
        GattWaitLimitMs);
    return status == GattCommunicationStatus::Success;
}

// Enters the one link in `built` as the youngest.
void Enter(std::list<DeviceLink>& built) {
    const Lock lock(connectionTable.mutex);
    connectionTable.links.splice(connectionTable.links.end(), built);
}

template <typename Interface>
void Close(const Reference<Interface>& object) {
    Call(object.template As<IClosable>(), &IClosable::Close);
}

// Switches notifications off, closes the service and returns it, for its last release. A link whose
// device can then not be closed stays in the table without its service; a repeat must not write to
// it, which a closed service refuses, and goes on with the device.
Reference<IGattDeviceService> SilenceAndCloseService(DeviceLink& link) {
    if (!link.service) {
        return nullptr;
    }
    // Whatever the device says, or if it says nothing, the link is taken down.
    WaitForCompletion(
        StartNotifyWrite(link, GattClientCharacteristicConfigurationDescriptorValue::None),
        GattWaitLimitMs);
    Close(link.service);
    return std::move(link.service);
}

// For the way out of a failed connect: closing one object must not keep the other from being
// closed.
template <typename Interface>
void CloseAfterFailure(const Reference<Interface>& object) noexcept {
    if (object) {
        LogFailuresOf([&] { Close(object); });
    }
}

// Takes the link out and leaves it in `removed`.
void Take(const DeviceLink* link, std::list<DeviceLink>& removed) REQUIRES(connectionTable.mutex) {
    auto& links = connectionTable.links;
    auto place = links.begin();
    while (&*place != link) {
        ++place;
    }
    removed.splice(removed.end(), links, place);
}

}  // namespace

}  // namespace orv

using namespace orv;

extern "C" ResultCode OrvDevice_Connect(BluetoothAddress address) {
    // Outside the frame, because a failure is logged before what was opened is closed.
    std::list<DeviceLink> built;
    const ResultCode result = RunExport(Traced("OrvDevice_Connect", address), [&]() -> ResultCode {
        built.emplace_back();
        DeviceLink& link = built.front();
        link.address = address;
        if (!FindDevice(link) || !FindService(link) || !RequestAccess(link) ||
            !FindCharacteristic(link) || !SwitchNotificationsOn(link)) {
            return Failure;
        }
        Enter(built);
        return 0;
    });
    if (!built.empty()) {
        CloseAfterFailure(built.front().service);
        CloseAfterFailure(built.front().device);
    }
    return result;
}

extern "C" ResultCode OrvDevice_Disconnect(BluetoothAddress address) {
    return RunExport(Traced("OrvDevice_Disconnect", address), [&]() -> ResultCode {
        // Destroyed without the lock: a final release is the platform's code, which may wait for a
        // notification that itself waits for the lock.
        std::list<DeviceLink> removed;
        Reference<IGattDeviceService> closed;
        const Lock lock(connectionTable.mutex);
        DeviceLink* link = connectionTable.FindByAddress(address);
        if (!link) {
            return Failure;
        }
        closed = SilenceAndCloseService(*link);
        Close(link->device);
        Take(link, removed);
        return 0;
    });
}
