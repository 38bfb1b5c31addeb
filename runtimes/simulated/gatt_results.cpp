// What lookups of services and characteristics find.
#include "runtimes/simulated/gatt.h"

namespace orv::simulated {

using objects::Call;
using objects::Make;
using objects::Member;
using objects::Property;
using objects::Ref;

namespace {

objects::Class servicesResultClass("GattDeviceServicesResult");
objects::Class characteristicsResultClass("GattCharacteristicsResult");

GattCommunicationStatus StatusOf(const Answer& answer) {
    return static_cast<GattCommunicationStatus>(answer.status.value_or(0));
}

}  // namespace

SimulatedGattDeviceServicesResult::SimulatedGattDeviceServicesResult(GattCommunicationStatus status,
                                                                     Ref<Services> found)
    : Object(servicesResultClass), answered(status), services(std::move(found)) {}

Ref<SimulatedGattDeviceServicesResult> SimulatedGattDeviceServicesResult::Find(
    const Ref<SimulatedBluetoothLEDevice>& device, const GUID& uuid, const Answer& answer) {
    std::vector<Ref<SimulatedGattDeviceService>> found;
    const Guard guard(World::Get().mutex);
    const std::vector<ServiceRecord>& all = device->Record()->services;
    for (std::size_t i = 0; i < all.size() && !answer.emptyList; ++i) {
        if (all[i].uuid == uuid) {
            found.push_back(Make<SimulatedGattDeviceService>(device, i));
        }
    }
    return Make<SimulatedGattDeviceServicesResult>(StatusOf(answer),
                                                   Make<Services>(std::move(found)));
}

HRESULT SimulatedGattDeviceServicesResult::get_Status(GattCommunicationStatus* value) {
    static Member member(servicesResultClass.name, "get_Status");
    return Property(member, value, answered);
}

HRESULT SimulatedGattDeviceServicesResult::get_Services(IVectorView<GattDeviceService>** value) {
    static Member member(servicesResultClass.name, "get_Services");
    return Call(member, [&] { return Give(value, services); });
}

SimulatedGattCharacteristicsResult::SimulatedGattCharacteristicsResult(
    GattCommunicationStatus status, Ref<Characteristics> found)
    : Object(characteristicsResultClass), answered(status), characteristics(std::move(found)) {}

Ref<SimulatedGattCharacteristicsResult> SimulatedGattCharacteristicsResult::Find(
    const Ref<SimulatedGattDeviceService>& service, const GUID& uuid, const Answer& answer) {
    std::vector<Ref<SimulatedGattCharacteristic>> found;
    const Guard guard(World::Get().mutex);
    const std::vector<ServiceRecord>& services = service->Record()->services;
    if (service->Index() < services.size() && !answer.emptyList) {
        for (const GUID& characteristic : services[service->Index()].characteristics) {
            if (characteristic == uuid) {
                found.push_back(Make<SimulatedGattCharacteristic>(service));
            }
        }
    }
    return Make<SimulatedGattCharacteristicsResult>(StatusOf(answer),
                                                    Make<Characteristics>(std::move(found)));
}

HRESULT SimulatedGattCharacteristicsResult::get_Status(GattCommunicationStatus* value) {
    static Member member(characteristicsResultClass.name, "get_Status");
    return Property(member, value, answered);
}

HRESULT SimulatedGattCharacteristicsResult::get_Characteristics(
    IVectorView<GattCharacteristic>** value) {
    static Member member(characteristicsResultClass.name, "get_Characteristics");
    return Call(member, [&] { return Give(value, characteristics); });
}

}  // namespace orv::simulated
