#include "runtimes/simulated/scenario/scenario.h"

namespace orv::simulated {

INT32 ReadRadioState(const ScenarioField& field) {
    return field.OneOf({{"Unknown", static_cast<INT32>(RadioState::Unknown)},
                        {"On", static_cast<INT32>(RadioState::On)},
                        {"Off", static_cast<INT32>(RadioState::Off)},
                        {"Disabled", static_cast<INT32>(RadioState::Disabled)}});
}

RadioRecord ReadRadio(const ScenarioField& field) {
    const ScenarioObject object(field, {"kind", "state"});
    const INT32 kind = object.Get("kind").OneOf({
        {"Other", static_cast<INT32>(RadioKind::Other)},
        {"WiFi", static_cast<INT32>(RadioKind::WiFi)},
        {"MobileBroadband", static_cast<INT32>(RadioKind::MobileBroadband)},
        {"Bluetooth", static_cast<INT32>(RadioKind::Bluetooth)},
        {"FM", static_cast<INT32>(RadioKind::FM)},
    });
    return {static_cast<RadioKind>(kind),
            static_cast<RadioState>(ReadRadioState(object.Get("state")))};
}

Scenario ReadScenario(const std::string& text) {
    const ScenarioValue tree = ParseScenarioText(text);
    const ScenarioObject object(
        ScenarioField(tree, ""),
        {"$schema", "title", "about", "adapter", "radios", "factoriesAgile", "activationLibrary",
         "failWaits", "answers", "devices", "faults", "events"});
    for (const char* words : {"$schema", "about"}) {
        if (const auto found = object.Find(words)) {
            found->Text();
        }
    }
    object.Get("title").Text();

    Scenario scenario;
    const Lock lock(worldMutex);
    scenario.factoriesAgile = object.Boolean("factoriesAgile", true);
    World::State& state = scenario.state;
    state.adapter = object.Boolean("adapter", true);
    state.radios = {{RadioKind::Bluetooth, RadioState::On}};
    if (object.Has("radios")) {
        state.radios.clear();
        for (const ScenarioField& radio : object.Items("radios")) {
            state.radios.push_back(ReadRadio(radio));
        }
    }
    if (const auto library = object.Find("activationLibrary")) {
        state.activationLibrary = library->Text();
    }
    if (const auto waits = object.Find("failWaits")) {
        const ScenarioObject failing(*waits, {"count", "code"});
        state.refusedWaits = failing.Get("count").Number(0, INT32_MAX);
        state.waitRefusal = failing.Get("code").Code();
    }
    state.canScan = state.SomeRadioOn();
    for (const ScenarioField& item : object.Items("answers")) {
        auto [operation, answer] = ReadAnswer(item, true);
        state.answers[{0, operation}] = answer;
    }
    for (const ScenarioField& device : object.Items("devices")) {
        ReadDevice(device, state);
    }
    for (const ScenarioField& fault : object.Items("faults")) {
        scenario.faults.push_back(ReadMemberFault(fault));
    }
    for (const ScenarioField& event : object.Items("events")) {
        scenario.events.push_back(std::make_shared<const ScenarioEvent>(ReadEvent(event, state)));
    }
    return scenario;
}

}  // namespace orv::simulated
