// The world that a host can be tried in.
#include "runtimes/simulated/world.h"

namespace orv::simulated {

namespace {

using std::chrono::milliseconds;

PacketRecord Named(const char16_t* name) {
    PacketRecord packet;
    packet.name = name;
    return packet;
}

// The data sections of a scan response that carry a device's three values: each begins with its
// key, lower byte first. 0x16 is the type of service data.
PacketRecord WithValues(BYTE value0500, BYTE value1130, const char* data1118) {
    std::vector<BYTE> data{0x18, 0x11};
    for (const char* at = data1118; *at != '\0'; ++at) {
        data.push_back(static_cast<BYTE>(*at));
    }
    PacketRecord packet;
    packet.sections = {
        {0x16, {0x00, 0x05, value0500}}, {0x16, {0x30, 0x11, value1130}}, {0x16, std::move(data)}};
    return packet;
}

}  // namespace

void World::ArrangeDefault() {
    Guard guard(mutex);
    state.adapter = true;
    state.radios = {{RadioKind::Bluetooth, RadioState::On}};

    const Device talking = Add(guard, 0xA0B1C2D3E4F5);
    talking->packets[0] = Named(u"ORV-0042");
    talking->packets[1] = WithValues(0x64, 0x01, "ORV-0042-SERIAL1");
    talking->signal = -55;
    talking->signalSpread = 6;
    talking->echo.on = true;
    talking->echo.interval = milliseconds(15);
    talking->advertisingInterval = milliseconds(100);

    const Device beacon = Add(guard, 0xA0B1C2D3E4F6);
    beacon->packets[0] = Named(u"ORV-0043");
    beacon->packets[1] = WithValues(0x2A, 0x07, "ORV-0043-SERIAL2");
    beacon->signal = -71;
    beacon->signalSpread = 4;
    beacon->known = false;
    beacon->advertisingInterval = milliseconds(250);

    const Device lamp = Add(guard, 0x112233445566);
    lamp->packets[0] = Named(u"Lamp");
    lamp->signal = -80;
    lamp->signalSpread = 3;
    lamp->services.clear();
    lamp->advertisingInterval = milliseconds(100);

    // A watcher may have started since the world began anew.
    WakeAdvertisers(guard);
}

}  // namespace orv::simulated
