#include "runtimes/simulated/world/world.h"

namespace orv::simulated {

namespace {

PacketContent Named(const char16_t* name) {
    PacketContent packet;
    packet.name = name;
    return packet;
}

// Returns a scan response with three sections of service data. Each starts with a 16-bit UUID, low
// byte first.
PacketContent WithValues(BYTE value0500, BYTE value1130, const char* data1118) {
    std::vector<BYTE> data{0x18, 0x11};
    for (const char* at = data1118; *at != '\0'; ++at) {
        data.push_back(static_cast<BYTE>(*at));
    }
    PacketContent packet;
    packet.sections = {{0x00, 0x05, value0500}, {0x30, 0x11, value1130}, std::move(data)};
    return packet;
}

}  // namespace

void World::ArrangeDefault() {
    const Lock lock(worldMutex);
    state.adapter = true;
    state.radios = {{RadioKind::Bluetooth, RadioState::On}};

    const Device talking = Add(0xA0B1C2D3E4F5);
    talking->packets[0] = Named(u"ORV-0042");
    talking->packets[1] = WithValues(0x64, 0x01, "ORV-0042-SERIAL1");
    talking->SetSignal(-55);
    talking->SetSignalSpread(6);
    talking->SetEcho(true, 15);
    talking->SetInterval(100);

    const Device beacon = Add(0xA0B1C2D3E4F6);
    beacon->packets[0] = Named(u"ORV-0043");
    beacon->packets[1] = WithValues(0x2A, 0x07, "ORV-0043-SERIAL2");
    beacon->SetSignal(-71);
    beacon->SetSignalSpread(4);
    beacon->known = Known::No;
    beacon->SetInterval(250);

    const Device lamp = Add(0x112233445566);
    lamp->packets[0] = Named(u"Lamp");
    lamp->SetSignal(-80);
    lamp->SetSignalSpread(3);
    lamp->services.clear();
    lamp->SetInterval(100);

    // Needed if a watcher was started before these devices were added.
    WakeAdvertisers();
}

}  // namespace orv::simulated
