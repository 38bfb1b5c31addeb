#include <algorithm>

#include "quelvixwinlib_simulated.h"
#include "runtimes/simulated/world/device.h"

namespace orv::simulated {

using objects::Ref;

namespace {

// Starts an operation that returns the configured status, or `standard` if none is configured.
template <typename Status>
HRESULT StartWithStatus(const Answer& answer, Status standard, IAsyncOperation<Status>** operation,
                        Duration standardDelay = Duration::zero()) {
    const Status status = static_cast<Status>(answer.status.value_or(static_cast<INT32>(standard)));
    auto result = [status](Status* results) {
        *results = status;
        return S_OK;
    };
    return StartOperation<Status>(answer, result, operation, standardDelay);
}

}  // namespace

SimulatedGattDeviceService::SimulatedGattDeviceService(const Ref<SimulatedBluetoothLEDevice>& owner,
                                                       std::size_t index)
    : ServiceObject(Ref<objects::DeviceObject>(owner.Get())),
      record(owner->Record()),
      position(index),
      mark(record) {}

HRESULT SimulatedGattDeviceService::RequestAccess(IAsyncOperation<DeviceAccessStatus>** operation) {
    Lock lock(worldMutex);
    const Answer answer = World::Get().AnswerOfDevice(record, OrvOperation_RequestAccess);
    lock.Release();
    return StartWithStatus(answer, DeviceAccessStatus::Allowed, operation);
}

HRESULT SimulatedGattDeviceService::FindCharacteristics(
    const GUID& uuid, IAsyncOperation<GattCharacteristicsResult>** operation) {
    Lock lock(worldMutex);
    const Answer answer = World::Get().AnswerOfDevice(record, OrvOperation_FindCharacteristics);
    lock.Release();
    auto result = [self = Ref<SimulatedGattDeviceService>(this), uuid,
                   answer](IGattCharacteristicsResult** found) {
        return Give(found, simulated::FindCharacteristics(self, uuid, answer));
    };
    return StartOperation<GattCharacteristicsResult>(answer, result, operation);
}

SimulatedGattCharacteristic::SimulatedGattCharacteristic(
    const Ref<SimulatedGattDeviceService>& owner)
    : CharacteristicObject(Ref<objects::ServiceObject>(owner.Get())), record(owner->Record()) {}

HRESULT SimulatedGattCharacteristic::Write(const Ref<objects::MemoryBuffer>& block,
                                           IAsyncOperation<GattCommunicationStatus>** operation) {
    World& world = World::Get();
    Lock lock(worldMutex);
    Answer answer = world.AnswerOfDevice(record, OrvOperation_WriteValue);
    Duration duration{0};
    if (block->Bytes().size() > record->largestWrite.value_or(SIZE_MAX)) {
        answer.status = static_cast<INT32>(GattCommunicationStatus::ProtocolError);
    } else if (record->exists && record->present && answer.startCode == S_OK) {
        duration = world.Receive(record, block->Bytes());
    }
    lock.Release();
    return StartWithStatus(answer, GattCommunicationStatus::Success, operation, duration);
}

HRESULT SimulatedGattCharacteristic::EnableNotifications(
    bool on, IAsyncOperation<GattCommunicationStatus>** operation) {
    Lock lock(worldMutex);
    const Answer answer = World::Get().AnswerOfDevice(record, OrvOperation_WriteDescriptor);
    const bool accepted = answer.startCode == S_OK && answer.ending == AsyncStatus::Completed &&
                          answer.status.value_or(0) == 0;
    // As on Windows, notifications arrive only if a handler is registered when they are enabled.
    const auto& registered = record->registrations;
    const bool heard =
        std::any_of(registered.begin(), registered.end(),
                    [this](const Registration& other) { return other.source.get() == this; });
    notifying = on ? notifying || (accepted && heard) : notifying && !accepted;
    lock.Release();
    return StartWithStatus(answer, GattCommunicationStatus::Success, operation);
}

EventRegistrationToken SimulatedGattCharacteristic::AddHandler(
    objects::SharedHandler<objects::ValueChangedHandler> handler) {
    auto raise = [self = Ref<SimulatedGattCharacteristic>(this),
                  taken = std::move(handler)](const std::vector<BYTE>& value) {
        taken->operator->()->Invoke(self.Get(), objects::MakeValueChangedArgs(value).Get());
    };
    Registration registration{objects::ShareAs<const NotificationSource>(this), std::move(raise),
                              std::make_shared<Strand>()};
    const Lock lock(worldMutex);
    DeviceRecord& device = *record;
    World::Get().AddRegistration(device, std::move(registration));
    return EventRegistrationToken{static_cast<INT64>(device.registrations.size())};
}

}  // namespace orv::simulated
