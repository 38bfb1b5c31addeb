#include "runtimes/bluez/world/device.h"
#include "runtimes/bluez/world/promise.h"
#include "runtimes/objects/gatt_results.h"

namespace orv::bluez {

namespace {

// Connects to the device of `owner` and returns the objects at the paths that find(device) returns.
template <typename Item, typename Result, typename T, typename Owner, typename Find>
HRESULT Lookup(IAsyncOperation<T>** operation, const Ref<Owner>& owner, Find find) {
    return StartOperation<T, Ref<Result>>(operation, [owner, find](const auto& promise) {
        Daemon::Get().links.Open(
            owner->Address(), [find](const Path& device) { return !find(device).empty(); },
            [owner, find, promise](const Path& device) {
                std::vector<Ref<Item>> found;
                if (device.empty()) {
                    promise->Complete(Make<Result>(GattCommunicationStatus::Unreachable, found));
                    return;
                }
                for (const Path& path : find(device)) {
                    found.push_back(Make<Item>(owner, path));
                }
                promise->Complete(Make<Result>(GattCommunicationStatus::Success, found));
            });
    });
}

// Returns true if the device itself rejected the write. After any other failure, the device
// may have received the bytes.
bool IsAnswerOfDevice(const Failure& failure) {
    for (const char* name :
         {"org.bluez.Error.NotPermitted", "org.bluez.Error.NotAuthorized",
          "org.bluez.Error.NotSupported", "org.bluez.Error.InvalidOffset",
          "org.bluez.Error.InvalidValueLength", "org.bluez.Error.InvalidArguments"}) {
        if (failure.name == name) {
            return true;
        }
    }
    return failure.message.find("ATT error") != std::string::npos;
}

}  // namespace

HRESULT BluezBluetoothLEDevice::FindServices(
    const GUID& uuid, IAsyncOperation<GattDeviceServicesResult>** operation) {
    return Lookup<BluezGattDeviceService, objects::ServicesResult<BluezGattDeviceService>>(
        operation, Ref<BluezBluetoothLEDevice>(this),
        [uuid](const Path& device) { return Daemon::Get().tree.FindServices(device, uuid); });
}

BluezGattDeviceService::BluezGattDeviceService(const Ref<BluezBluetoothLEDevice>& owner,
                                               Path pathOfService)
    : ServiceObject(Ref<objects::DeviceObject>(owner.Get())), path(std::move(pathOfService)) {}

// Always allowed, because a program that may use the daemon may use all its devices.
HRESULT BluezGattDeviceService::RequestAccess(IAsyncOperation<DeviceAccessStatus>** operation) {
    return StartOperation<DeviceAccessStatus>(
        operation, [](const auto& promise) { promise->Complete(DeviceAccessStatus::Allowed); });
}

HRESULT BluezGattDeviceService::FindCharacteristics(
    const GUID& uuid, IAsyncOperation<GattCharacteristicsResult>** operation) {
    return Lookup<BluezGattCharacteristic, objects::CharacteristicsResult<BluezGattCharacteristic>>(
        operation, Ref<BluezGattDeviceService>(this), [path = path, uuid](const Path&) {
            return Daemon::Get().tree.FindCharacteristics(path, uuid);
        });
}

// Calls Changed to unsubscribe the closed service's characteristics.
void BluezGattDeviceService::Shut() {
    closed.store(true, std::memory_order_release);
    Daemon::Get().loop.Post([] { Daemon::Get().Changed(); });
}

BluezGattCharacteristic::BluezGattCharacteristic(const Ref<BluezGattDeviceService>& owner,
                                                 Path pathOfCharacteristic)
    : CharacteristicObject(Ref<objects::ServiceObject>(owner.Get())),
      path(std::move(pathOfCharacteristic)) {}

void BluezGattCharacteristic::Receive(const Bytes& value) {
    if (!HasOpenService()) {
        return;
    }
    objects::Event<objects::ValueChangedHandler>::Handlers handlers;
    {
        const Lock lock(mutex);
        handlers = changed.All();
    }
    for (const auto& handler : handlers) {
        handler->operator->()->Invoke(this, objects::MakeValueChangedArgs(value).Get());
    }
}

// Writes with response. The daemon then splits a block that is longer than one packet, up to the
// maximum size of a value.
HRESULT BluezGattCharacteristic::Write(const Ref<objects::MemoryBuffer>& block,
                                       IAsyncOperation<GattCommunicationStatus>** operation) {
    const auto append = [block](sd_bus_message* call) {
        const Bytes& bytes = block->Bytes();
        const int code = sd_bus_message_append_array(call, 'y', bytes.data(), bytes.size());
        return code < 0 ? code : sd_bus_message_append(call, "a{sv}", 1, "type", "s", "request");
    };
    const auto write = [path = path, append](const auto& promise) {
        Daemon::Get().bus.Call(path, "org.bluez.GattCharacteristic1", "WriteValue", append,
                               [promise](const Failure& failure, sd_bus_message*) {
                                   if (!failure) {
                                       promise->Complete(GattCommunicationStatus::Success);
                                   } else if (IsAnswerOfDevice(failure)) {
                                       promise->Complete(GattCommunicationStatus::ProtocolError);
                                   }  // otherwise, the operation ends with an error
                               });
    };
    return StartOperation<GattCommunicationStatus>(operation, write);
}

HRESULT BluezGattCharacteristic::EnableNotifications(
    bool on, IAsyncOperation<GattCommunicationStatus>** operation) {
    return StartOperation<GattCommunicationStatus>(
        operation, [self = Ref<BluezGattCharacteristic>(this), on](const auto& promise) {
            Notifications& notifications = Daemon::Get().notifications;
            if (on) {
                notifications.Subscribe(
                    self->path, self->Address(), objects::ShareAs<Subscriber>(self.Get()),
                    [promise](bool isOn) {
                        promise->Complete(isOn ? GattCommunicationStatus::Success
                                               : GattCommunicationStatus::Unreachable);
                    });
                return;
            }
            notifications.Unsubscribe(self->path, *self.Get());
            promise->Complete(GattCommunicationStatus::Success);
        });
}

EventRegistrationToken BluezGattCharacteristic::AddHandler(
    objects::SharedHandler<objects::ValueChangedHandler> handler) {
    const Lock lock(mutex);
    return changed.Add(std::move(handler));
}

}  // namespace orv::bluez
