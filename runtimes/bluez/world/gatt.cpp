#include "runtimes/bluez/world/device.h"
#include "runtimes/bluez/world/promise.h"
#include "runtimes/objects/gatt_results.h"

namespace orv::bluez {

namespace {

using StatusPromise = std::shared_ptr<Promise<GattCommunicationStatus, GattCommunicationStatus>>;

// Passes the daemon's values to a characteristic, and keeps the characteristic alive.
class Subscription final : public Subscriber {
  public:
    explicit Subscription(Ref<BluezGattCharacteristic> subscriber)
        : characteristic(std::move(subscriber)) {}

    void Receive(const Bytes& value) override { characteristic->Raise(value); }
    bool IsOpen() const override { return characteristic->HasOpenService(); }

  private:
    const Ref<BluezGattCharacteristic> characteristic;
};

// Returns the result of a lookup. `device` is empty if the device was not reached.
template <typename Result, typename Item, typename Owner, typename Paths>
Ref<Result> ResultOf(const Path& device, const Ref<Owner>& owner, Paths&& paths) {
    std::vector<Ref<Item>> found;
    if (device.empty()) {
        return Make<Result>(GattCommunicationStatus::Unreachable, found);
    }
    for (const Path& path : paths()) {
        found.push_back(Make<Item>(owner, path));
    }
    return Make<Result>(GattCommunicationStatus::Success, std::move(found));
}

// Returns true if the device itself reported the failure. After another failure, it is unknown
// whether the device has received the block.
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

void EndWrite(const StatusPromise& promise, const Failure& failure) {
    if (!failure || IsAnswerOfDevice(failure)) {
        promise->Complete(failure ? GattCommunicationStatus::ProtocolError
                                  : GattCommunicationStatus::Success);
    } else {
        promise->Fail();
    }
}

}  // namespace

HRESULT BluezBluetoothLEDevice::FindServices(
    const GUID& uuid, IAsyncOperation<GattDeviceServicesResult>** operation) {
    using Result = objects::ServicesResult<BluezGattDeviceService>;
    return StartOperation<GattDeviceServicesResult, Ref<Result>>(
        operation, [self = Ref<BluezBluetoothLEDevice>(this), uuid](const auto& promise) {
            const auto find = [uuid](const Path& path) {
                return Daemon::Get().tree.FindServices(path, uuid);
            };
            Daemon::Get().links.Open(
                self->Address(), [find](const Path& path) { return !find(path).empty(); },
                [self, promise, find](const Path& path) {
                    promise->Complete(ResultOf<Result, BluezGattDeviceService>(
                        path, self, [&] { return find(path); }));
                });
        });
}

// ---------------------------------------------------------------------------------- the service

BluezGattDeviceService::BluezGattDeviceService(const Ref<BluezBluetoothLEDevice>& owner,
                                               Path pathOfService)
    : ServiceObject(Ref<objects::DeviceObject>(owner.Get())),
      address(owner->Address()),
      path(std::move(pathOfService)) {}

// A program that may use the daemon may use all its devices.
HRESULT BluezGattDeviceService::RequestAccess(IAsyncOperation<DeviceAccessStatus>** operation) {
    return StartOperation<DeviceAccessStatus, DeviceAccessStatus>(
        operation, [](const auto& promise) { promise->Complete(DeviceAccessStatus::Allowed); });
}

HRESULT BluezGattDeviceService::FindCharacteristics(
    const GUID& uuid, IAsyncOperation<GattCharacteristicsResult>** operation) {
    using Result = objects::CharacteristicsResult<BluezGattCharacteristic>;
    return StartOperation<GattCharacteristicsResult, Ref<Result>>(
        operation, [self = Ref<BluezGattDeviceService>(this), uuid](const auto& promise) {
            const auto find = [self, uuid] {
                return Daemon::Get().tree.FindCharacteristics(self->path, uuid);
            };
            Daemon::Get().links.Open(
                self->address, [find](const Path&) { return !find().empty(); },
                [self, promise, find](const Path& reached) {
                    promise->Complete(
                        ResultOf<Result, BluezGattCharacteristic>(reached, self, find));
                });
        });
}

// The call of Changed unsubscribes the closed service's characteristics.
void BluezGattDeviceService::Shut() {
    closed.store(true, std::memory_order_release);
    Daemon::Get().Post([] { Daemon::Get().Changed(); });
}

// --------------------------------------------------------------------------- the characteristic

BluezGattCharacteristic::BluezGattCharacteristic(const Ref<BluezGattDeviceService>& owner,
                                                 Path pathOfCharacteristic)
    : CharacteristicObject(Ref<objects::ServiceObject>(owner.Get())),
      address(owner->Address()),
      path(std::move(pathOfCharacteristic)) {}

void BluezGattCharacteristic::Raise(const Bytes& value) {
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
    return StartOperation<GattCommunicationStatus, GattCommunicationStatus>(
        operation, [path = path, append](const auto& promise) {
            Daemon::Get().bus.Call(
                path, "org.bluez.GattCharacteristic1", "WriteValue", append,
                [promise](const Failure& failure, sd_bus_message*) { EndWrite(promise, failure); });
        });
}

HRESULT BluezGattCharacteristic::EnableNotifications(
    bool on, IAsyncOperation<GattCommunicationStatus>** operation) {
    return StartOperation<GattCommunicationStatus, GattCommunicationStatus>(
        operation, [self = Ref<BluezGattCharacteristic>(this), on](const auto& promise) {
            Notifications& notifications = Daemon::Get().notifications;
            SharedSubscriber subscriber = self->subscription.lock();
            if (on) {
                subscriber = subscriber ? subscriber : std::make_shared<Subscription>(self);
                self->subscription = subscriber;
                notifications.Subscribe(
                    self->path, self->address, subscriber, [promise](bool isOn) {
                        promise->Complete(isOn ? GattCommunicationStatus::Success
                                               : GattCommunicationStatus::Unreachable);
                    });
                return;
            }
            if (subscriber) {
                notifications.Unsubscribe(self->path, *subscriber);
            }
            promise->Complete(GattCommunicationStatus::Success);
        });
}

EventRegistrationToken BluezGattCharacteristic::AddHandler(
    objects::SharedHandler<objects::ValueChangedHandler> handler) {
    const Lock lock(mutex);
    return changed.Add(std::move(handler));
}

}  // namespace orv::bluez
