// Services and characteristics of a device that the library has found.
#include "runtimes/simulated/gatt.h"

#include "quelvixwinlib_simulated.h"
#include "runtimes/objects/buffer.h"

namespace orv::simulated {

using objects::Argument;
using objects::Call;
using objects::Make;
using objects::Member;
using objects::Ref;

namespace {

objects::Class serviceClass("GattDeviceService");
objects::Class characteristicClass("GattCharacteristic");
objects::Class valueChangedClass("GattValueChangedEventArgs");

// An operation whose result is a plain status: what is arranged, or the good one.
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

// ---------------------------------------------------------------------------------- the service

SimulatedGattDeviceService::SimulatedGattDeviceService(Ref<SimulatedBluetoothLEDevice> owner,
                                                       std::size_t index)
    : Object(serviceClass), device(std::move(owner)), position(index), mark(device->Record()) {}

HRESULT SimulatedGattDeviceService::get_Device(IBluetoothLEDevice** value) {
    static Member member(serviceClass.name, "get_Device");
    return Call(member, [&] { return Give(value, device); });
}

HRESULT SimulatedGattDeviceService::RequestAccessAsync(
    IAsyncOperation<DeviceAccessStatus>** operation) {
    static Member member(serviceClass.name, "RequestAccessAsync");
    return Call(member, [&] {
        if (IsClosed()) {
            return RO_E_CLOSED;
        }
        Guard guard(World::Get().mutex);
        const Answer answer = AnswerOfDevice(guard, Record(), OrvOperation_RequestAccess);
        guard.unlock();
        return StartWithStatus(answer, DeviceAccessStatus::Allowed, operation);
    });
}

HRESULT SimulatedGattDeviceService::GetCharacteristicsForUuidWithCacheModeAsync(
    GUID uuid, BluetoothCacheMode mode, IAsyncOperation<GattCharacteristicsResult>** operation) {
    static Member member(serviceClass.name, "GetCharacteristicsForUuidWithCacheModeAsync");
    return Call(member, Argument::Number(static_cast<UINT64>(mode)), [&] {
        if (mode != BluetoothCacheMode::Uncached) {
            return E_INVALIDARG;
        }
        if (IsClosed()) {
            return RO_E_CLOSED;
        }
        Guard guard(World::Get().mutex);
        const Answer answer = AnswerOfDevice(guard, Record(), OrvOperation_FindCharacteristics);
        guard.unlock();
        auto result = [self = Ref<SimulatedGattDeviceService>(this), uuid,
                       answer](IGattCharacteristicsResult** found) {
            return Give(found, SimulatedGattCharacteristicsResult::Find(self, uuid, answer));
        };
        return StartOperation<GattCharacteristicsResult>(answer, result, operation);
    });
}

HRESULT SimulatedGattDeviceService::Close() {
    static Member member(serviceClass.name, "Close");
    return Call(member, [&] {
        mark.Close();
        return S_OK;
    });
}

// --------------------------------------------------------------------------- the characteristic

SimulatedGattCharacteristic::SimulatedGattCharacteristic(Ref<SimulatedGattDeviceService> owner)
    : Object(characteristicClass), service(std::move(owner)) {}

void SimulatedGattCharacteristic::Raise(const objects::SharedHandler<ValueChangedHandler>& handler,
                                        const std::vector<BYTE>& value) {
    const auto args = Make<SimulatedGattValueChangedEventArgs>(value);
    handler->operator->()->Invoke(this, args.Get());
}

HRESULT SimulatedGattCharacteristic::get_Service(IGattDeviceService** value) {
    static Member member(characteristicClass.name, "get_Service");
    return Call(member, [&] { return Give(value, service); });
}

HRESULT SimulatedGattCharacteristic::WriteValueAsync(
    IBuffer* value, IAsyncOperation<GattCommunicationStatus>** operation) {
    static Member member(characteristicClass.name, "WriteValueAsync");
    return Call(member, [&] {
        if (value == nullptr || service->IsClosed()) {
            return value == nullptr ? E_POINTER : RO_E_CLOSED;
        }
        const Ref<objects::MemoryBuffer> block = objects::MemoryBuffer::From(value);
        if (!block) {
            return E_INVALIDARG;
        }
        World& world = World::Get();
        Guard guard(world.mutex);
        const Device& device = service->Record();
        Answer answer = AnswerOfDevice(guard, device, OrvOperation_WriteValue);
        Duration duration{0};
        if (block->Bytes().size() > device->largestWrite.value_or(SIZE_MAX)) {
            answer.status = static_cast<INT32>(GattCommunicationStatus::ProtocolError);
        } else if (device->exists && device->present && answer.startCode == S_OK) {
            duration = world.Receive(guard, device, block->Bytes());
        }
        guard.unlock();
        return StartWithStatus(answer, GattCommunicationStatus::Success, operation, duration);
    });
}

HRESULT SimulatedGattCharacteristic::WriteClientCharacteristicConfigurationDescriptorAsync(
    GattClientCharacteristicConfigurationDescriptorValue value,
    IAsyncOperation<GattCommunicationStatus>** operation) {
    static Member member(characteristicClass.name,
                         "WriteClientCharacteristicConfigurationDescriptorAsync");
    return Call(member, Argument::Number(static_cast<UINT64>(value)), [&] {
        if (service->IsClosed()) {
            return RO_E_CLOSED;
        }
        Guard guard(World::Get().mutex);
        const Answer answer =
            AnswerOfDevice(guard, service->Record(), OrvOperation_WriteDescriptor);
        const bool accepted = answer.startCode == S_OK && answer.ending == AsyncStatus::Completed &&
                              answer.status.value_or(0) == 0;
        notifying = value == GattClientCharacteristicConfigurationDescriptorValue::Notify
                        ? notifying || accepted
                        : notifying && !accepted;
        guard.unlock();
        return StartWithStatus(answer, GattCommunicationStatus::Success, operation);
    });
}

HRESULT SimulatedGattCharacteristic::add_ValueChanged(ValueChangedHandler* handler,
                                                      EventRegistrationToken* token) {
    static Member member(characteristicClass.name, "add_ValueChanged");
    return Call(member, [&] {
        if (handler == nullptr || token == nullptr) {
            return E_POINTER;
        }
        Registration registration{Ref<SimulatedGattCharacteristic>(this),
                                  objects::TakeHandler(handler), std::make_shared<Strand>()};
        World& world = World::Get();
        Guard guard(world.mutex);
        DeviceRecord& device = *service->Record();
        std::vector<Registration>& all = device.registrations;
        if (device.exists) {
            all.push_back(std::move(registration));
            for (Recorded& recorded : device.recording) {
                world.clock.After(guard, recorded.delay, std::move(recorded.action));
            }
            device.recording.clear();
        }
        token->value = static_cast<INT64>(all.size());
        return S_OK;
    });
}

SimulatedGattValueChangedEventArgs::SimulatedGattValueChangedEventArgs(
    const std::vector<BYTE>& bytes)
    : Object(valueChangedClass), buffer(Make<objects::MemoryBuffer>(bytes)) {}

HRESULT SimulatedGattValueChangedEventArgs::get_CharacteristicValue(IBuffer** value) {
    static Member member(valueChangedClass.name, "get_CharacteristicValue");
    return Call(member, [&] { return Give(value, buffer); });
}

}  // namespace orv::simulated
