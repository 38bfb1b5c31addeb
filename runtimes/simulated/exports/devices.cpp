#include "runtimes/objects/utf8.h"
#include "runtimes/simulated/exports/control.h"
#include "runtimes/simulated/scenario/parse.h"

using namespace orv;
using namespace orv::simulated;

namespace {

constexpr INT32 PacketCount = 2;
constexpr INT32 OperationCount = 8;

bool IsPacket(INT32 packet) {
    return packet >= 0 && packet < PacketCount;
}

bool IsBytes(const uint8_t* data, INT32 length) {
    return length >= 0 && (data != nullptr || length == 0);
}

std::vector<BYTE> Bytes(const uint8_t* data, INT32 length) {
    return length == 0 ? std::vector<BYTE>() : std::vector<BYTE>(data, data + length);
}

}  // namespace

int32_t OrvWorld_AddDevice(uint64_t address, const char* name) {
    return ControlLocked([&](World& world) REQUIRES(worldMutex) {
        std::optional<std::u16string> given;
        if (name != nullptr) {
            given = objects::FromUtf8(name);
        }
        const Device device = world.Add(address);
        if (!device) {
            return NoSuchThing;
        }
        device->packets[0].name = std::move(given);
        return 0;
    });
}

namespace {

INT32 SetKnown(UINT64 address, Known known) {
    return SetProperty(address, [&](DeviceRecord& device) REQUIRES(worldMutex) {
        device.known = known;
        return true;
    });
}

}  // namespace

int32_t OrvWorld_ForgetDevice(uint64_t address) {
    return SetKnown(address, Known::No);
}

int32_t OrvWorld_KnowDevice(uint64_t address) {
    return SetKnown(address, Known::Yes);
}

int32_t OrvWorld_KnowOnceHeard(uint64_t address) {
    return SetKnown(address, Known::OnceHeard);
}

int32_t OrvWorld_SetPresent(uint64_t address, int32_t present) {
    return SetProperty(address, [&](DeviceRecord& device) REQUIRES(worldMutex) {
        device.present = present != 0;
        return true;
    });
}

int32_t OrvWorld_SetOneAtATime(uint64_t address, int32_t on) {
    return SetProperty(address, [&](DeviceRecord& device) REQUIRES(worldMutex) {
        device.oneAtATime = on != 0;
        return true;
    });
}

int32_t OrvWorld_SetLargestWrite(uint64_t address, int32_t bytes) {
    return SetProperty(address, [&](DeviceRecord& device)
                                    REQUIRES(worldMutex) { return device.SetLargestWrite(bytes); });
}

int32_t OrvWorld_SetName(uint64_t address, int32_t packet, const uint16_t* name, int32_t length) {
    return ControlDevice(address, [&](World&, const Device& device) REQUIRES(worldMutex) {
        if (!IsPacket(packet) || length < -1 || (name == nullptr && length > 0)) {
            return NoSuchThing;
        }
        device->packets[packet].name.reset();
        if (length >= 0) {
            device->packets[packet].name.emplace(name, name + length);
        }
        return 0;
    });
}

int32_t OrvWorld_SetSignal(uint64_t address, int32_t dBm) {
    return SetProperty(
        address, [&](DeviceRecord& device) REQUIRES(worldMutex) { return device.SetSignal(dBm); });
}

int32_t OrvWorld_SetSignalSpread(uint64_t address, int32_t dB) {
    return SetProperty(address, [&](DeviceRecord& device)
                                    REQUIRES(worldMutex) { return device.SetSignalSpread(dB); });
}

int32_t OrvWorld_AddSection(uint64_t address, int32_t packet, int32_t type, const uint8_t* data,
                            int32_t length) {
    return ControlDevice(address, [&](World&, const Device& device) REQUIRES(worldMutex) {
        if (!IsPacket(packet) || type < 0 || type > 0xFF || !IsBytes(data, length)) {
            return NoSuchThing;
        }
        device->packets[packet].sections.push_back(Bytes(data, length));
        return 0;
    });
}

int32_t OrvWorld_ClearSections(uint64_t address, int32_t packet) {
    return ControlDevice(address, [&](World&, const Device& device) REQUIRES(worldMutex) {
        if (!IsPacket(packet)) {
            return NoSuchThing;
        }
        device->packets[packet].sections.clear();
        return 0;
    });
}

int32_t OrvWorld_SetAdvertisingInterval(uint64_t address, int32_t milliseconds) {
    return ControlDevice(address, [&](World& world, const Device& device) REQUIRES(worldMutex) {
        if (!device->SetInterval(milliseconds)) {
            return NoSuchThing;
        }
        world.StartAdvertising(device);
        return 0;
    });
}

int32_t OrvWorld_RemoveServices(uint64_t address) {
    return ControlDevice(address, [](World&, const Device& device) REQUIRES(worldMutex) {
        device->services.clear();
        return 0;
    });
}

int32_t OrvWorld_AddService(uint64_t address, const char* uuid) {
    return ControlDevice(address, [&](World&, const Device& device) REQUIRES(worldMutex) {
        const std::optional<GUID> parsed = ParseUuid(uuid == nullptr ? "" : uuid);
        if (!parsed) {
            return NoSuchThing;
        }
        device->services.push_back({*parsed, {}});
        return static_cast<INT32>(device->services.size() - 1);
    });
}

int32_t OrvWorld_AddCharacteristic(uint64_t address, int32_t service, const char* uuid) {
    return ControlDevice(address, [&](World&, const Device& device) REQUIRES(worldMutex) {
        const std::optional<GUID> parsed = ParseUuid(uuid == nullptr ? "" : uuid);
        const auto index = static_cast<std::size_t>(service);
        if (!parsed || service < 0 || index >= device->services.size()) {
            return NoSuchThing;
        }
        device->services[index].characteristics.push_back(*parsed);
        return static_cast<INT32>(device->services[index].characteristics.size() - 1);
    });
}

int32_t OrvWorld_SetEcho(uint64_t address, int32_t on, int32_t intervalMs) {
    return SetProperty(address, [&](DeviceRecord& device) REQUIRES(worldMutex) {
        return device.SetEcho(on != 0, intervalMs);
    });
}

int32_t OrvWorld_Answer(uint64_t address, int32_t operation, int32_t manner, int32_t value) {
    return ControlLocked([&](World& world) REQUIRES(worldMutex) {
        const bool ofMachine =
            operation == OrvOperation_FindAdapter || operation == OrvOperation_FindRadios;
        if (operation < 0 || operation >= OperationCount || (ofMachine && address != 0)) {
            return NoSuchThing;
        }
        Answer answer = world.AnswerOf(address, operation);
        if (!answer.Set(manner, value)) {
            return NoSuchThing;
        }
        world.state.answers[{address, operation}] = answer;
        return 0;
    });
}

int32_t OrvWorld_Advertise(uint64_t address, int32_t packet, int32_t watcher) {
    return ControlDevice(address, [&](World& world, const Device& device) REQUIRES(worldMutex) {
        if (!IsPacket(packet) || watcher < -1) {
            return NoSuchThing;
        }
        return world.Advertise(*device, packet, watcher);
    });
}

int32_t OrvWorld_Notify(uint64_t address, const uint8_t* data, int32_t length,
                        int32_t registration) {
    return ControlDevice(address, [&](World& world, const Device& device) REQUIRES(worldMutex) {
        if (!IsBytes(data, length) || registration < -1) {
            return NoSuchThing;
        }
        return world.Notify(*device, Bytes(data, length), registration);
    });
}
