#include "runtimes/objects/gatt_results.h"

namespace orv::objects {

Class servicesResultClass("GattDeviceServicesResult");
Member servicesGetStatusMember(servicesResultClass.name, "get_Status");
Member getServicesMember(servicesResultClass.name, "get_Services");
Class characteristicsResultClass("GattCharacteristicsResult");
Member characteristicsGetStatusMember(characteristicsResultClass.name, "get_Status");
Member getCharacteristicsMember(characteristicsResultClass.name, "get_Characteristics");

}  // namespace orv::objects
