#include "runtimes/simulated/world/device.h"

namespace orv::simulated {

using objects::Make;
using objects::Ref;

namespace {

GattCommunicationStatus StatusOf(const Answer& answer) {
    return static_cast<GattCommunicationStatus>(answer.status.value_or(0));
}

}  // namespace

Ref<SimulatedServicesResult> FindServices(const Ref<SimulatedBluetoothLEDevice>& device,
                                          const GUID& uuid, const Answer& answer) {
    std::vector<Ref<SimulatedGattDeviceService>> found;
    const Lock lock(worldMutex);
    const std::vector<ServiceRecord>& all = device->Record()->services;
    for (std::size_t i = 0; i < all.size() && !answer.emptyList; ++i) {
        if (all[i].uuid == uuid) {
            found.push_back(Make<SimulatedGattDeviceService>(device, i));
        }
    }
    return Make<SimulatedServicesResult>(StatusOf(answer), std::move(found));
}

Ref<SimulatedCharacteristicsResult> FindCharacteristics(
    const Ref<SimulatedGattDeviceService>& service, const GUID& uuid, const Answer& answer) {
    std::vector<Ref<SimulatedGattCharacteristic>> found;
    const Lock lock(worldMutex);
    const std::vector<ServiceRecord>& services = service->Record()->services;
    if (service->Index() < services.size() && !answer.emptyList) {
        for (const GUID& characteristic : services[service->Index()].characteristics) {
            if (characteristic == uuid) {
                found.push_back(Make<SimulatedGattCharacteristic>(service));
            }
        }
    }
    return Make<SimulatedCharacteristicsResult>(StatusOf(answer), std::move(found));
}

}  // namespace orv::simulated
