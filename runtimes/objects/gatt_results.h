#pragma once

#include "runtimes/objects/stubs/gatt.h"
#include "runtimes/objects/vector.h"

namespace orv::objects {

extern Class servicesResultClass;
extern Member servicesGetStatusMember;
extern Member getServicesMember;
extern Class characteristicsResultClass;
extern Member characteristicsGetStatusMember;
extern Member getCharacteristicsMember;

template <typename Service>
class ServicesResult final : public Object<Stub<IGattDeviceServicesResult>> {
  public:
    ServicesResult(GattCommunicationStatus status, std::vector<Ref<Service>> found)
        : Object(servicesResultClass),
          answered(status),
          services(Make<VectorView<GattDeviceService, Service>>(std::move(found))) {}

    HRESULT get_Status(GattCommunicationStatus* value) override {
        return Property(servicesGetStatusMember, value, answered);
    }
    HRESULT get_Services(IVectorView<GattDeviceService>** value) override {
        return Call(getServicesMember, [&] { return Give(value, services); });
    }

  private:
    const GattCommunicationStatus answered;
    const Ref<VectorView<GattDeviceService, Service>> services;
};

template <typename Characteristic>
class CharacteristicsResult final : public Object<Stub<IGattCharacteristicsResult>> {
  public:
    CharacteristicsResult(GattCommunicationStatus status, std::vector<Ref<Characteristic>> found)
        : Object(characteristicsResultClass),
          answered(status),
          characteristics(Make<VectorView<GattCharacteristic, Characteristic>>(std::move(found))) {}

    HRESULT get_Status(GattCommunicationStatus* value) override {
        return Property(characteristicsGetStatusMember, value, answered);
    }
    HRESULT get_Characteristics(IVectorView<GattCharacteristic>** value) override {
        return Call(getCharacteristicsMember, [&] { return Give(value, characteristics); });
    }

  private:
    const GattCommunicationStatus answered;
    const Ref<VectorView<GattCharacteristic, Characteristic>> characteristics;
};

}  // namespace orv::objects
