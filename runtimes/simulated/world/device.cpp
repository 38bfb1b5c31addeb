#include "runtimes/simulated/world/device.h"

#include "quelvixwinlib_simulated.h"

namespace orv::simulated {

using objects::Make;
using objects::Ref;

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

SimulatedBluetoothLEDevice::SimulatedBluetoothLEDevice(Device device)
    : record(std::move(device)), mark(record) {}

HRESULT SimulatedBluetoothLEDevice::FromBluetoothAddressAsync(
    UINT64 address, IAsyncOperation<BluetoothLEDevice>** operation) {
    World& world = World::Get();
    Lock lock(worldMutex);
    const Answer answer = world.AnswerOf(address, OrvOperation_FindDevice);
    Device found = world.Find(address);
    if (found && found->known != Known::Yes) {
        found = nullptr;
    }
    lock.Release();
    auto result = [found](IBluetoothLEDevice** device) {
        return Give(device, found ? Make<SimulatedBluetoothLEDevice>(found)
                                  : Ref<SimulatedBluetoothLEDevice>());
    };
    return StartOperation<BluetoothLEDevice>(answer, result, operation);
}

HRESULT SimulatedBluetoothLEDevice::FindServices(
    const GUID& uuid, IAsyncOperation<GattDeviceServicesResult>** operation) {
    Lock lock(worldMutex);
    const Answer answer = World::Get().AnswerOfDevice(record, OrvOperation_FindServices);
    lock.Release();
    auto result = [self = Ref<SimulatedBluetoothLEDevice>(this), uuid,
                   answer](IGattDeviceServicesResult** services) {
        return Give(services, simulated::FindServices(self, uuid, answer));
    };
    return StartOperation<GattDeviceServicesResult>(answer, result, operation);
}

}  // namespace orv::simulated
