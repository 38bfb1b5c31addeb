// A scenario: the configuration of a world and its events, read from a file.
#pragma once

#include "runtimes/simulated/scenario/checked_fields.h"
#include "runtimes/simulated/world/world.h"

namespace orv::simulated {

// Called with the world's mutex held.
using EventAction = std::function<void(World&)>;

struct ScenarioEvent {
    EventAction action;
    Duration delay{0};    // time after the world's reset, or after the first link to `linkedTo`
    UINT64 linkedTo = 0;  // address of a device, or 0: `delay` counts from the reset
    INT32 times = 1;
    Duration every{0};
};

struct MemberFault {
    std::string member;
    HRESULT failure = S_OK;
    bool hangs = false;
};

// A complete scenario. Reading it checks all values, so playing it cannot fail halfway.
struct Scenario {
    World::State state;
    bool factoriesAgile = true;
    std::vector<MemberFault> faults;
    std::vector<std::shared_ptr<const ScenarioEvent>> events;

    // Returns whether the scenario requires a world that is linked into the library.
    bool NeedsLinkedWorld() const {
        return !state.activationLibrary.empty() || state.refusedWaits > 0;
    }
};

// Reads a scenario from JSON text. Throws a ScenarioFault if the text is not a valid scenario.
Scenario ReadScenario(const std::string& text);

// Read parts of a scenario. All throw a ScenarioFault if the part is invalid.
void ReadDevice(const ScenarioField& field, World::State& state) REQUIRES(worldMutex);
Known ReadKnown(const ScenarioField& field);
PacketContent ReadPacket(const ScenarioObject& packet, const PacketContent& standard);
ScenarioEvent ReadEvent(const ScenarioField& field, const World::State& state) REQUIRES(worldMutex);
MemberFault ReadMemberFault(const ScenarioField& field);
RadioRecord ReadRadio(const ScenarioField& field);
INT32 ReadRadioState(const ScenarioField& field);
// Reads an operation and how the system is to answer it. `ofMachine` is true for the adapter and
// the radios.
std::pair<INT32, Answer> ReadAnswer(const ScenarioField& field, bool ofMachine);

}  // namespace orv::simulated
