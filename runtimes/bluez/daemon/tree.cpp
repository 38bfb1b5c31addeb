#include "runtimes/bluez/daemon/tree.h"

#include <systemd/sd-id128.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace orv::bluez {

namespace {

// Orders adapters by number: hci2 comes before hci10.
bool ComesBefore(const Path& one, const Path& other) {
    return one.size() != other.size() ? one.size() < other.size() : one < other;
}

Bytes KeyOf(UINT16 company) {
    return {static_cast<BYTE>(company), static_cast<BYTE>(company >> 8)};
}

// Returns a UUID as an advertisement contains it: last byte first, and shortened to 16 or 32 bits
// if it is derived from the Bluetooth base UUID.
Bytes KeyOf(const char* text) {
    constexpr std::string_view Base = "-0000-1000-8000-00805f9b34fb";
    const std::string_view uuid = text;
    sd_id128_t id{};
    sd_id128_from_string(text, &id);
    Bytes key(std::rbegin(id.bytes), std::rend(id.bytes));
    if (uuid.size() == 36 && uuid.substr(8) == Base) {
        key.erase(key.begin(), key.begin() + 12);
        key.resize(key[2] == 0 && key[3] == 0 ? 2 : 4);
    }
    return key;
}

// Replaces all sections, because the daemon always sends the complete dictionary.
template <typename Key>
void ReadData(sd_bus_message* message, const char* type, std::vector<Bytes>& sections) {
    if (CheckMemory(sd_bus_message_enter_container(message, 'v', type)) <= 0) {
        return;
    }
    sections.clear();
    ForEachEntry<Key>(message, type + 1,
                      [&](Key key) { ReadVariant(message, sections.emplace_back(KeyOf(key))); });
    sd_bus_message_exit_container(message);
}

void ReadProperty(sd_bus_message* message, std::string_view name, Adapter& adapter, News&) {
    if (name == "Powered") {
        ReadVariant(message, adapter.powered);
    }
}

void ReadProperty(sd_bus_message* message, std::string_view name, Device& device, News& news) {
    if (name == "Adapter") {
        ReadVariant(message, device.adapter);
    } else if (name == "Address") {
        device.address = ReadAddress(message);
    } else if (name == "Connected") {
        ReadVariant(message, device.connected);
    } else if (name == "ServicesResolved") {
        ReadVariant(message, device.resolved);
    } else if (name == "Name") {
        ReadVariant(message, device.name);
        news.heard = &device;
    } else if (name == "RSSI") {
        ReadVariant(message, device.signal.emplace());
        news.heard = &device;
    } else if (name == "ManufacturerData") {
        ReadData<UINT16>(message, "a{qv}", device.manufacturerData);
        news.heard = &device;
        news.heardData = true;
    } else if (name == "ServiceData") {
        ReadData<const char*>(message, "a{sv}", device.serviceData);
        news.heard = &device;
        news.heardData = true;
    } else if (name == "AdvertisingFlags" || name == "AdvertisingData" || name == "TxPower") {
        news.heard = &device;
    }
}

void ReadProperty(sd_bus_message* message, std::string_view name, Service& service, News&) {
    if (name == "Device") {
        ReadVariant(message, service.device);
    } else if (name == "UUID") {
        service.uuid = ReadUuid(message);
    }
}

void ReadProperty(sd_bus_message* message, std::string_view name, Characteristic& characteristic,
                  News& news) {
    if (name == "Service") {
        ReadVariant(message, characteristic.service);
    } else if (name == "UUID") {
        characteristic.uuid = ReadUuid(message);
    } else if (name == "Flags") {
        ReadVariant(message, characteristic.flags);
    } else if (name == "Value") {
        ReadVariant(message, news.value.emplace());
    }
}

// A property keeps its value until the daemon reports a new one, because a report may contain only
// the signal strength.
template <typename Object>
void ReadProperties(sd_bus_message* message, Object& object, News& news) {
    ForEachEntry<const char*>(message, "{sv}", [&](const char* property) {
        ReadProperty(message, property, object, news);
    });
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
    Tree loaded;
    News ignored;
    ForEachEntry<const char*>(reply, "{oa{sa{sv}}}", [&](const char* path) {
        loaded.ReadInterfaces(path, reply, ignored);
    });
    *this = std::move(loaded);
}

News Tree::Apply(sd_bus_message* signal, const Path& path) {
    News news;
    const char* text = nullptr;
    if (sd_bus_message_is_signal(signal, nullptr, "PropertiesChanged") > 0) {
        // Ignores changes of unknown objects: such a signal contains only some properties.
        if (sd_bus_message_read_basic(signal, 's', &text) > 0) {
            ForObjects(text, [&](auto& objects) {
                if (const auto known = objects.find(path); known != objects.end()) {
                    ReadProperties(signal, known->second, news);
                }
            });
        }
    } else if (sd_bus_message_read_basic(signal, 'o', &text) > 0) {
        if (sd_bus_message_is_signal(signal, nullptr, "InterfacesAdded") > 0) {
            ReadInterfaces(text, signal, news);
        } else {
            for (const std::string& interface : ReadStrings(signal)) {
                ForObjects(interface, [&](auto& objects) { objects.erase(text); });
            }
        }
    }
    return news;
}

template <typename Use>
void Tree::ForObjects(std::string_view interface, Use&& use) {
    if (interface == "org.bluez.Adapter1") {
        use(adapters);
    } else if (interface == "org.bluez.Device1") {
        use(devices);
    } else if (interface == "org.bluez.GattService1") {
        use(services);
    } else if (interface == "org.bluez.GattCharacteristic1") {
        use(characteristics);
    }
}

void Tree::ReadInterfaces(const Path& path, sd_bus_message* message, News& news) {
    ForEachEntry<const char*>(message, "{sa{sv}}", [&](const char* interface) {
        ForObjects(interface, [&](auto& objects) { ReadProperties(message, objects[path], news); });
    });
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
