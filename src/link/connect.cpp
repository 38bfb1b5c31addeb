#include "frame/export_frame.h"
#include "link/gatt_steps.h"
#include "link/receive.h"
#include "platform/abi/bluetooth.h"
#include "platform/activation.h"
#include "platform/wait.h"

namespace orv {

namespace {

constexpr GUID LinkServiceUuid = Guid("4880c12c-fdcb-4077-8920-a450d7f9b907");
constexpr GUID LinkCharacteristicUuid = Guid("fec26ec4-6d71-4442-9f81-55bc21d658d6");

// The steps of a connect. Each step stores the object that it obtains in `link`. It returns false
// if its operation times out or is rejected, and throws on any other failure.

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

// Registers the handler before it switches notifications on, so that no notification is missed.
// Drops the registration token, because the handler is never unregistered.
bool SwitchNotificationsOn(DeviceLink& link) {
    const auto handler =
        EventHandler<GattCharacteristic, GattValueChangedEventArgs>::Create(OnDataReceived);
    Get(link.characteristic, &IGattCharacteristic::add_ValueChanged, handler.Get());
    const auto status = AwaitResult(
        StartNotifyWrite(link, GattClientCharacteristicConfigurationDescriptorValue::Notify),
        GattWaitLimitMs);
    return status == GattCommunicationStatus::Success;
}

void Enter(std::list<DeviceLink>& built) {
    const Lock lock(connectionTable.mutex);
    connectionTable.links.splice(connectionTable.links.end(), built);
}

// Closes the service or device after a failed connect. Logs a failure instead of throwing it, so
// that the caller can still close the second object.
template <typename Interface>
void CloseAfterFailure(const Reference<Interface>& object) noexcept {
    if (object) {
        LogFailuresOf([&] { Close(object); });
    }
}

}  // namespace

}  // namespace orv

using namespace orv;

extern "C" ResultCode OrvDevice_Connect(BluetoothAddress address) {
    // This list outlives RunExport, which must log a failure before the opened objects are closed.
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
