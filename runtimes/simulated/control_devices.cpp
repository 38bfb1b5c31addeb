// The control functions for devices: what they are, how they answer, what they send.
#include "runtimes/simulated/control.h"
#include "runtimes/simulated/texts.h"

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

// ------------------------------------------------------------------------------- what there is

int32_t OrvWorld_AddDevice(uint64_t address, const char* name) {
    return ControlLocked([&](World& world, Guard& guard) {
        std::optional<std::u16string> given;
        if (name != nullptr) {
            given = FromUtf8(name);
        }
        const Device device = world.Add(guard, address);
        if (!device) {
            return NoSuchThing;
        }
        device->packets[0].name = std::move(given);
        return 0;
    });
}

int32_t OrvWorld_ForgetDevice(uint64_t address) {
    return ControlDevice(address, [](World&, Guard&, const Device& device) {
        device->known = false;
        return 0;
    });
}

int32_t OrvWorld_KnowOnceHeard(uint64_t address) {
    return ControlDevice(address, [](World&, Guard&, const Device& device) {
        device->known = false;
        device->knownOnceHeard = true;
        return 0;
    });
}

int32_t OrvWorld_SetPresent(uint64_t address, int32_t present) {
    return ControlDevice(address, [&](World&, Guard&, const Device& device) {
        device->present = present != 0;
        return 0;
    });
}

int32_t OrvWorld_SetOneAtATime(uint64_t address, int32_t on) {
    return ControlDevice(address, [&](World&, Guard&, const Device& device) {
        device->oneAtATime = on != 0;
        return 0;
    });
}

int32_t OrvWorld_SetLargestWrite(uint64_t address, int32_t bytes) {
    return ControlDevice(address, [&](World&, Guard&, const Device& device) {
        if (bytes < -1) {
            return NoSuchThing;
        }
        device->largestWrite.reset();
        if (bytes >= 0) {
            device->largestWrite = static_cast<std::size_t>(bytes);
        }
        return 0;
    });
}

int32_t OrvWorld_SetName(uint64_t address, int32_t packet, const uint16_t* name, int32_t length) {
    return ControlDevice(address, [&](World&, Guard&, const Device& device) {
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
    return ControlDevice(address, [&](World&, Guard&, const Device& device) {
        if (dBm < INT16_MIN || dBm > INT16_MAX) {
            return NoSuchThing;
        }
        device->signal = static_cast<INT16>(dBm);
        device->signalSpread = 0;
        return 0;
    });
}

int32_t OrvWorld_AddSection(uint64_t address, int32_t packet, int32_t type, const uint8_t* data,
                            int32_t length) {
    return ControlDevice(address, [&](World&, Guard&, const Device& device) {
        if (!IsPacket(packet) || type < 0 || type > 0xFF || !IsBytes(data, length)) {
            return NoSuchThing;
        }
        device->packets[packet].sections.push_back({static_cast<BYTE>(type), Bytes(data, length)});
        return 0;
    });
}

int32_t OrvWorld_ClearSections(uint64_t address, int32_t packet) {
    return ControlDevice(address, [&](World&, Guard&, const Device& device) {
        if (!IsPacket(packet)) {
            return NoSuchThing;
        }
        device->packets[packet].sections.clear();
        return 0;
    });
}

int32_t OrvWorld_SetAdvertisingInterval(uint64_t address, int32_t milliseconds) {
    return ControlDevice(address, [&](World& world, Guard& guard, const Device& device) {
        if (milliseconds < 0) {
            return NoSuchThing;
        }
        device->advertisingInterval = std::chrono::milliseconds(milliseconds);
        world.StartAdvertising(guard, device);
        return 0;
    });
}

int32_t OrvWorld_RemoveServices(uint64_t address) {
    return ControlDevice(address, [](World&, Guard&, const Device& device) {
        device->services.clear();
        return 0;
    });
}

int32_t OrvWorld_AddService(uint64_t address, const char* uuid) {
    return ControlDevice(address, [&](World&, Guard&, const Device& device) {
        const std::optional<GUID> parsed = ParseUuid(uuid == nullptr ? "" : uuid);
        if (!parsed) {
            return NoSuchThing;
        }
        device->services.push_back({*parsed, {}});
        return static_cast<INT32>(device->services.size() - 1);
    });
}

int32_t OrvWorld_AddCharacteristic(uint64_t address, int32_t service, const char* uuid) {
    return ControlDevice(address, [&](World&, Guard&, const Device& device) {
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
    return ControlDevice(address, [&](World&, Guard&, const Device& device) {
        if (intervalMs < 0) {
            return NoSuchThing;
        }
        device->echo.on = on != 0;
        device->echo.interval = std::chrono::milliseconds(intervalMs);
        return 0;
    });
}

// ------------------------------------------------------------------------- answers and events

int32_t OrvWorld_Answer(uint64_t address, int32_t operation, int32_t manner, int32_t value) {
    return ControlLocked([&](World& world, Guard& guard) {
        const bool ofMachine =
            operation == OrvOperation_FindAdapter || operation == OrvOperation_FindRadios;
        if (operation < 0 || operation >= OperationCount || (ofMachine && address != 0)) {
            return NoSuchThing;
        }
        Answer answer = world.AnswerOf(guard, address, operation);
        if (!answer.Set(manner, value)) {
            return NoSuchThing;
        }
        world.state.answers[{address, operation}] = answer;
        return 0;
    });
}

int32_t OrvWorld_Advertise(uint64_t address, int32_t packet, int32_t watcher) {
    return ControlDevice(address, [&](World& world, Guard& guard, const Device& device) {
        if (!IsPacket(packet) || watcher < -1) {
            return NoSuchThing;
        }
        return world.Advertise(guard, *device, packet, watcher);
    });
}

int32_t OrvWorld_Notify(uint64_t address, const uint8_t* data, int32_t length,
                        int32_t registration) {
    return ControlDevice(address, [&](World& world, Guard& guard, const Device& device) {
        if (!IsBytes(data, length) || registration < -1) {
            return NoSuchThing;
        }
        return world.Notify(guard, *device, Bytes(data, length), registration);
    });
}
