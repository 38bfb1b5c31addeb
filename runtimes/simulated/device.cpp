// A device that the library has found.
#include "runtimes/simulated/device.h"

#include <algorithm>

#include "quelvixwinlib_simulated.h"
#include "runtimes/simulated/gatt.h"

namespace orv::simulated {

using objects::Argument;
using objects::Call;
using objects::Make;
using objects::Member;
using objects::Property;
using objects::Ref;

namespace {

objects::Class deviceClass("BluetoothLEDevice");

}  // namespace

void OpenMark::Open() noexcept {
    INT32 expected = Unseen;
    if (state.compare_exchange_strong(expected, Opened)) {
        device->openObjects.fetch_add(1);
    }
}

void OpenMark::Close() noexcept {
    if (state.exchange(Closed) == Opened) {
        device->openObjects.fetch_sub(1);
    }
}

namespace {

// Behind the operation that the device is busy with.
void Queue(Answer& answer, DeviceRecord& device, Duration now) {
    const Duration begin = std::max(now, device.busyUntil);
    if (begin > now && answer.timing != Answer::Timing::Never) {
        answer.delay = begin - now +
                       (answer.timing == Answer::Timing::After ? answer.delay : Duration::zero());
        answer.timing = Answer::Timing::After;
    }
    if (answer.timing == Answer::Timing::Never) {
        device.busyUntil = Duration::max();
    } else if (answer.timing == Answer::Timing::After) {
        device.busyUntil = now + answer.delay;
    }
}

}  // namespace

Answer AnswerOfDevice(Guard& guard, const Device& device, INT32 operation) {
    World& world = World::Get();
    if (!device->exists) {
        return Answer::Silence();
    }
    Answer answer = world.AnswerOf(guard, device->address, operation);
    if (operation == OrvOperation_RequestAccess) {
        return answer;  // by the system itself
    }
    if (!device->present) {
        answer.timing = Answer::Timing::After;
        answer.delay = AbsenceLimit;
        answer.status = static_cast<INT32>(GattCommunicationStatus::Unreachable);
    }
    if (device->oneAtATime && answer.startCode == S_OK) {
        Queue(answer, *device, world.clock.Now(guard));
    }
    return answer;
}

SimulatedBluetoothLEDevice::SimulatedBluetoothLEDevice(Device device)
    : Object(deviceClass), record(std::move(device)), mark(record) {}

HRESULT SimulatedBluetoothLEDevice::FromBluetoothAddressAsync(
    UINT64 address, IAsyncOperation<BluetoothLEDevice>** operation) {
    World& world = World::Get();
    Guard guard(world.mutex);
    const Answer answer = world.AnswerOf(guard, address, OrvOperation_FindDevice);
    Device found = world.Find(guard, address);
    if (found && !found->known) {
        found = nullptr;
    }
    guard.unlock();
    auto result = [found](IBluetoothLEDevice** device) {
        return Give(device, found ? Make<SimulatedBluetoothLEDevice>(found)
                                  : Ref<SimulatedBluetoothLEDevice>());
    };
    return StartOperation<BluetoothLEDevice>(answer, result, operation);
}

HRESULT SimulatedBluetoothLEDevice::get_BluetoothAddress(UINT64* value) {
    static Member member(deviceClass.name, "get_BluetoothAddress");
    return Property(member, value, record->address);
}

HRESULT SimulatedBluetoothLEDevice::GetGattServicesForUuidWithCacheModeAsync(
    GUID uuid, BluetoothCacheMode mode, IAsyncOperation<GattDeviceServicesResult>** operation) {
    static Member member(deviceClass.name, "GetGattServicesForUuidWithCacheModeAsync");
    return Call(member, Argument::Number(static_cast<UINT64>(mode)), [&] {
        if (mode != BluetoothCacheMode::Uncached) {
            return E_INVALIDARG;
        }
        if (IsClosed()) {
            return RO_E_CLOSED;
        }
        Guard guard(World::Get().mutex);
        const Answer answer = AnswerOfDevice(guard, record, OrvOperation_FindServices);
        guard.unlock();
        auto result = [self = Ref<SimulatedBluetoothLEDevice>(this), uuid,
                       answer](IGattDeviceServicesResult** services) {
            return Give(services, SimulatedGattDeviceServicesResult::Find(self, uuid, answer));
        };
        return StartOperation<GattDeviceServicesResult>(answer, result, operation);
    });
}

HRESULT SimulatedBluetoothLEDevice::Close() {
    static Member member(deviceClass.name, "Close");
    return Call(member, [&] {
        mark.Close();
        return S_OK;
    });
}

}  // namespace orv::simulated
