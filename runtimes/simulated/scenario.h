// A scenario: a world, and what happens in it, as a file describes it.
#pragma once

#include "runtimes/simulated/scenario_fields.h"
#include "runtimes/simulated/world.h"

namespace orv::simulated {

using Happening = std::function<void(World&, Guard&)>;

// Something that happens, perhaps several times.
struct ScenarioEvent {
    Happening happening;
    Duration delay{0};    // after the beginning, or after the first link of a device begins to open
    UINT64 linkedTo = 0;  // that device; 0: after the beginning
    INT32 times = 1;
    Duration every{0};
};

struct MemberFault {
    std::string member;
    HRESULT failure = S_OK;
    bool hangs = false;
};

// Complete and consistent once it is read, so that playing it changes nothing by halves.
struct Scenario {
    World::State state;
    bool factoriesAgile = true;
    std::vector<MemberFault> faults;
    std::vector<std::shared_ptr<const ScenarioEvent>> events;
};

// Throws a ScenarioFault.
Scenario ReadScenario(const std::string& text);

// Parts of it. All throw a ScenarioFault.
void ReadDevice(const ScenarioField& field, World::State& state);
PacketRecord ReadPacket(const ScenarioObject& packet, const PacketRecord& standard);
ScenarioEvent ReadEvent(const ScenarioField& field, const World::State& state);
MemberFault ReadMemberFault(const ScenarioField& field);
RadioRecord ReadRadio(const ScenarioField& field);
INT32 ReadRadioState(const ScenarioField& field);
// How one operation is answered instead of like `answers` so far; `ofMachine`: the adapter and the
// radios, else a device.
std::pair<INT32, Answer> ReadAnswer(const ScenarioField& field, bool ofMachine);

}  // namespace orv::simulated
