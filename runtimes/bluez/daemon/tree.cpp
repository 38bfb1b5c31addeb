#include "runtimes/bluez/daemon/tree.h"

#include <algorithm>
#include <cstring>

namespace orv::bluez {

namespace {

constexpr const char* AdapterInterface = "org.bluez.Adapter1";
constexpr const char* DeviceInterface = "org.bluez.Device1";
constexpr const char* ServiceInterface = "org.bluez.GattService1";
constexpr const char* CharacteristicInterface = "org.bluez.GattCharacteristic1";

// Orders adapters by number: hci2 comes before hci10.
bool ComesBefore(const Path& one, const Path& other) {
    return one.size() != other.size() ? one.size() < other.size() : one < other;
}

// Replaces the data, because each report contains the data of all keys.
template <typename Key, typename Map>
void ReadData(sd_bus_message* message, char key, const char* type, Map& data) {
    if (sd_bus_message_enter_container(message, 'v', type) <= 0) {
        return;
    }
    data.clear();
    ForEachEntry<Key>(message, key, "v", [&](Key found) { ReadVariant(message, data[found]); });
    sd_bus_message_exit_container(message);
}

template <typename Map>
std::vector<Path> Find(const Map& map, const GUID& uuid, const Path& owner,
                       Path Map::mapped_type::*ownerOf) {
    std::vector<Path> found;
    for (const auto& [path, object] : map) {
        if (object.*ownerOf == owner && object.uuid == uuid) {
            found.push_back(path);
        }
    }
    return found;
}

}  // namespace

bool Characteristic::Has(const char* flag) const {
    return std::find(flags.begin(), flags.end(), flag) != flags.end();
}

void Tree::Load(sd_bus_message* reply) {
    Clear();
    News ignored;
    ForEachEntry<const char*>(reply, 'o', "a{sa{sv}}",
                              [&](const char* path) { ReadInterfaces(path, reply, ignored); });
}

News Tree::Apply(sd_bus_message* signal, const Path& path) {
    News news;
    const char* text = nullptr;
    if (sd_bus_message_is_signal(signal, nullptr, "PropertiesChanged") > 0) {
        // Ignores changes of unknown objects, because they contain only some properties.
        if (Knows(path) && sd_bus_message_read_basic(signal, 's', &text) > 0) {
            ReadInterface(path, text, signal, news);
        }
    } else if (sd_bus_message_read_basic(signal, 'o', &text) > 0) {
        if (sd_bus_message_is_signal(signal, nullptr, "InterfacesAdded") > 0) {
            ReadInterfaces(text, signal, news);
        } else {
            RemoveInterfaces(text, signal);
        }
    }
    return news;
}

bool Tree::Knows(const Path& path) const {
    return adapters.count(path) + devices.count(path) + services.count(path) +
               characteristics.count(path) !=
           0;
}

void Tree::ReadInterfaces(const Path& path, sd_bus_message* message, News& news) {
    ForEachEntry<const char*>(message, 's', "a{sv}", [&](const char* interface) {
        ReadInterface(path, interface, message, news);
    });
}

void Tree::ReadInterface(const Path& path, const std::string& interface, sd_bus_message* message,
                         News& news) {
    if (interface == AdapterInterface) {
        ReadAdapter(path, message);
    } else if (interface == DeviceInterface) {
        ReadDevice(path, message, news);
    } else if (interface == ServiceInterface) {
        ReadService(path, message);
    } else if (interface == CharacteristicInterface) {
        ReadCharacteristic(path, message, news);
    }
}

void Tree::ReadAdapter(const Path& path, sd_bus_message* message) {
    Adapter& adapter = adapters[path];
    ForEachEntry<const char*>(message, 's', "v", [&](const char* property) {
        if (strcmp(property, "Powered") == 0) {
            ReadVariant(message, adapter.powered);
        }
    });
}

// A property keeps its value until the daemon reports a new one, because a report may contain only
// the signal strength.
void Tree::ReadDevice(const Path& path, sd_bus_message* message, News& news) {
    Device& device = devices[path];
    ForEachEntry<const char*>(message, 's', "v", [&](const char* property) {
        const std::string_view name = property;
        std::string text;
        if (name == "Adapter") {
            ReadVariant(message, device.adapter);
        } else if (name == "Address") {
            ReadVariant(message, text);
            device.address = ParseAddress(text).value_or(0);
        } else if (name == "Name") {
            ReadVariant(message, device.name);
            news.heard = &device;
        } else if (name == "Connected") {
            ReadVariant(message, device.connected);
        } else if (name == "ServicesResolved") {
            ReadVariant(message, device.resolved);
        } else if (name == "RSSI") {
            ReadVariant(message, device.signal.emplace());
            news.heard = &device;
        } else if (name == "ManufacturerData") {
            ReadData<UINT16>(message, 'q', "a{qv}", device.manufacturerData);
            news.heard = &device;
            news.heardData = true;
        } else if (name == "ServiceData") {
            ReadData<const char*>(message, 's', "a{sv}", device.serviceData);
            news.heard = &device;
            news.heardData = true;
        } else if (name == "AdvertisingFlags" || name == "AdvertisingData" || name == "TxPower") {
            news.heard = &device;
        }
    });
}

void Tree::ReadService(const Path& path, sd_bus_message* message) {
    Service& service = services[path];
    ForEachEntry<const char*>(message, 's', "v", [&](const char* property) {
        std::string text;
        if (strcmp(property, "Device") == 0) {
            ReadVariant(message, service.device);
        } else if (strcmp(property, "UUID") == 0) {
            ReadVariant(message, text);
            service.uuid = ParseUuid(text).value_or(GUID{});
        }
    });
}

void Tree::ReadCharacteristic(const Path& path, sd_bus_message* message, News& news) {
    const auto created = characteristics.try_emplace(path);
    const auto place = created.first;
    const bool isNew = created.second;
    Characteristic& characteristic = place->second;
    ForEachEntry<const char*>(message, 's', "v", [&](const char* property) {
        const std::string_view name = property;
        std::string text;
        if (name == "Service") {
            ReadVariant(message, characteristic.service);
        } else if (name == "UUID") {
            ReadVariant(message, text);
            characteristic.uuid = ParseUuid(text).value_or(GUID{});
        } else if (name == "Flags") {
            ReadVariant(message, characteristic.flags);
        } else if (name == "Value" && !isNew) {
            ReadVariant(message, news.value);
            news.characteristic = &place->first;
        }
    });
}

void Tree::RemoveInterfaces(const Path& path, sd_bus_message* message) {
    if (sd_bus_message_enter_container(message, 'a', "s") <= 0) {
        return;
    }
    const char* text = nullptr;
    while (sd_bus_message_read_basic(message, 's', &text) > 0) {
        const std::string_view interface = text;
        if (interface == AdapterInterface) {
            adapters.erase(path);
        } else if (interface == DeviceInterface) {
            devices.erase(path);
        } else if (interface == ServiceInterface) {
            services.erase(path);
        } else if (interface == CharacteristicInterface) {
            characteristics.erase(path);
        }
    }
    sd_bus_message_exit_container(message);
}

const Path* Tree::ScanningAdapter() const {
    const Path* first = nullptr;
    for (const auto& [path, adapter] : adapters) {
        if (adapter.powered && (first == nullptr || ComesBefore(path, *first))) {
            first = &path;
        }
    }
    return first;
}

const std::pair<const Path, Device>* Tree::FindDevice(UINT64 address) const {
    const Path* const scanning = ScanningAdapter();
    const std::pair<const Path, Device>* best = nullptr;
    int bestRank = -1;
    for (const auto& entry : devices) {
        const Device& device = entry.second;
        const int rank = device.connected                                     ? 2
                         : scanning != nullptr && device.adapter == *scanning ? 1
                                                                              : 0;
        if (device.address == address && rank > bestRank) {
            best = &entry;
            bestRank = rank;
        }
    }
    return best;
}

std::vector<Path> Tree::FindServices(const Path& device, const GUID& uuid) const {
    return Find(services, uuid, device, &Service::device);
}

std::vector<Path> Tree::FindCharacteristics(const Path& service, const GUID& uuid) const {
    return Find(characteristics, uuid, service, &Characteristic::service);
}

const Characteristic* Tree::FindCharacteristic(const Path& path) const {
    const auto found = characteristics.find(path);
    return found == characteristics.end() ? nullptr : &found->second;
}

}  // namespace orv::bluez
