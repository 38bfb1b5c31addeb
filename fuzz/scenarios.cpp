// Fuzzes scenario files: each must be played, or rejected with the position of the error.
#include <algorithm>
#include <cstdlib>

#include "fuzz/decode.h"
#include "quelvixwinlib_simulated.h"
#include "runtimes/simulated/scenario/player.h"

using namespace orv::simulated;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    try {
        PlayScenario(World::Get(), ReadScenario(text), true);
    } catch (const ScenarioFault& fault) {
        const auto lines = 1 + std::count(text.begin(), text.end(), '\n');
        if (fault.line < 1 || fault.line > lines || fault.field.empty() || fault.text.empty()) {
            std::abort();
        }
    }
    // Simulates only 5 ms, because a scenario may cause very many events. Makes no library calls,
    // because a scenario can make them hang.
    OrvWorld_PassTime(5);
    return 0;
}
