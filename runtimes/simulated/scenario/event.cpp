#include "quelvixwinlib_simulated.h"
#include "runtimes/simulated/scenario/scenario.h"

namespace orv::simulated {

namespace {

using std::chrono::milliseconds;

using DeviceAction = std::function<void(World&, const Device&)>;

EventAction ReadAdvertise(const ScenarioObject& object, const DeviceRecord& device)
    REQUIRES(worldMutex) {
    const INT32 kind = object.Get("advertise")
                           .OneOf({{"Advertisement", OrvPacket_Advertisement},
                                   {"ScanResponse", OrvPacket_ScanResponse}});
    auto packet = std::make_shared<Packet>(PacketOf(device, kind == OrvPacket_ScanResponse));
    packet->content = ReadPacket(object, device.packets[kind]);
    packet->signal =
        static_cast<INT16>(object.Number("signal", device.signal, INT16_MIN, INT16_MAX));
    return [packet = SharedPacket(packet)](World& world) REQUIRES(worldMutex) {
        if (const Device sender = world.Find(packet->address)) {
            world.Send(*sender, packet, -1);
        }
    };
}

DeviceAction ReadChange(const ScenarioObject& object, const std::string& kind) {
    const ScenarioField field = object.Get(kind.c_str());
    if (kind == "notify") {
        return [value = field.Bytes()](World& world, const Device& device)
                   REQUIRES(worldMutex) { world.NotifyOpenLinks(*device, value); };
    }
    if (kind == "answer") {
        return [change = ReadAnswer(field, false)](World& world, const Device& device)
                   REQUIRES(worldMutex) {
                       world.state.answers[{device->address, change.first}] = change.second;
                   };
    }
    if (kind == "present") {
        return [present = field.Boolean()](World&, const Device& device)
                   REQUIRES(worldMutex) { device->present = present; };
    }
    return [known = ReadKnown(field)](World&, const Device& device)
               REQUIRES(worldMutex) { device->known = known; };
}

EventAction ReadDeviceEvent(const ScenarioObject& object, const Device& device)
    REQUIRES(worldMutex) {
    const std::string kind = object.OneOf({"advertise", "notify", "answer", "present", "known"});
    if (kind == "advertise") {
        return ReadAdvertise(object, *device);
    }
    return [change = ReadChange(object, kind), address = device->address](World& world)
               REQUIRES(worldMutex) {
                   if (const Device found = world.Find(address)) {
                       change(world, found);
                   }
               };
}

EventAction ReadMachineEvent(const ScenarioObject& object, const World::State& state) {
    if (const auto adapter = object.Find("adapter")) {
        return [present = adapter->Boolean()](World& world)
                   REQUIRES(worldMutex) { world.state.adapter = present; };
    }
    const ScenarioField radio = object.Get("radio");
    if (state.radios.empty()) {
        radio.Refuse("is set in a world without radios", "a world with radios");
    }
    const auto index =
        static_cast<std::size_t>(radio.Number(0, static_cast<INT32>(state.radios.size()) - 1));
    const auto radioState = static_cast<RadioState>(ReadRadioState(object.Get("state")));
    return [index, radioState](World& world)
               REQUIRES(worldMutex) { world.SwitchRadio(index, radioState); };
}

Device FindDevice(const ScenarioField& field, const World::State& state) {
    const auto found = state.devices.find(field.Address());
    if (found == state.devices.end()) {
        field.Refuse("names no device of this scenario", "the address of one of them");
    }
    return found->second;
}

ScenarioObject EventObject(const ScenarioField& field) {
    const ScenarioObject object(field, {"at", "after", "times", "every", "device", "advertise",
                                        "signal", "name", "nameUtf16", "sections", "notify",
                                        "answer", "present", "known", "radio", "state", "adapter"});
    const std::string kind =
        object.OneOf({"advertise", "notify", "answer", "present", "known", "radio", "adapter"});
    if (kind == "advertise") {
        return {field,
                {"at", "after", "times", "every", "device", "advertise", "signal", "name",
                 "nameUtf16", "sections"}};
    }
    if (kind == "radio") {
        return {field, {"at", "times", "every", "radio", "state"}};
    }
    if (kind == "adapter") {
        return {field, {"at", "times", "every", "adapter"}};
    }
    return {field, {"at", "after", "times", "every", "device", kind.c_str()}};
}

}  // namespace

ScenarioEvent ReadEvent(const ScenarioField& field, const World::State& state) {
    const ScenarioObject object = EventObject(field);
    ScenarioEvent event;
    if (object.Has("radio") || object.Has("adapter")) {
        event.action = ReadMachineEvent(object, state);
        event.delay = milliseconds(object.Get("at").Number(0, INT32_MAX));
    } else {
        const Device device = FindDevice(object.Get("device"), state);
        event.action = ReadDeviceEvent(object, device);
        const std::string start = object.OneOf({"at", "after"});
        event.delay = milliseconds(object.Get(start.c_str()).Number(0, INT32_MAX));
        event.linkedTo = start == "after" ? device->address : 0;
    }
    event.times = object.Number("times", 1, 1, INT32_MAX);
    event.every = milliseconds(object.Number("every", 0, 0, INT32_MAX));
    if (event.times > 1 && event.every <= Duration::zero()) {
        object.Field().Refuse("has times without every", "every, the ms between two times,");
    }
    return event;
}

}  // namespace orv::simulated
