// A copy of the Bluetooth daemon's D-Bus objects. Only the event loop's thread may use it.
#pragma once

#include <map>
#include <optional>
#include <string_view>

#include "runtimes/bluez/bus/message.h"

namespace orv::bluez {

using Path = std::string;

struct Adapter {
    bool powered = false;
};

struct Device {
    Path adapter;
    UINT64 address = 0;
    std::string name;  // empty if unknown
    bool connected = false;
    bool resolved = false;
    std::optional<INT16> signal;
    // Sections of an advertisement: the company identifier or UUID, low byte first, then the data.
    std::vector<Bytes> manufacturerData;
    std::vector<Bytes> serviceData;
};

struct Service {
    Path device;
    GUID uuid{};
};

struct Characteristic {
    Path service;
    GUID uuid{};
    std::vector<std::string> flags;

    bool Has(const char* flag) const;
};

// Events that a D-Bus signal reports besides its object's new state.
struct News {
    // The device whose advertisement was received, or null. The advertisement may be unchanged.
    const Device* heard = nullptr;
    bool heardData = false;      // the report contains manufacturer or service data
    std::optional<Bytes> value;  // the value of a characteristic
};

class Tree {
  public:
    // Replaces all objects with those in the reply of GetManagedObjects. If Load throws,
    // the tree does not change.
    void Load(sd_bus_message* reply);
    void Clear() { *this = {}; }
    // Applies a signal of the daemon. The result points to objects of the tree.
    News Apply(sd_bus_message* signal, const Path& path);

    const std::map<Path, Adapter>& Adapters() const { return adapters; }
    // Returns the adapter to scan with: the powered adapter with the lowest number, or null.
    const Path* ScanningAdapter() const;

    // Returns the device with an address, or null. If several adapters list the device, prefers the
    // connected entry, then the scanning adapter's.
    const std::pair<const Path, Device>* FindDevice(UINT64 address) const;
    std::vector<Path> FindServices(const Path& device, const GUID& uuid) const;
    std::vector<Path> FindCharacteristics(const Path& service, const GUID& uuid) const;
    const Characteristic* FindCharacteristic(const Path& path) const;

  private:
    // Calls use(objects) with the map of the objects with this interface, if there is such a map.
    template <typename Use>
    void ForObjects(std::string_view interface, Use&& use);
    void ReadInterfaces(const Path& path, sd_bus_message* message, News& news);

    std::map<Path, Adapter> adapters;
    std::map<Path, Device> devices;
    std::map<Path, Service> services;
    std::map<Path, Characteristic> characteristics;
};

}  // namespace orv::bluez
