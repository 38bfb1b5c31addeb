// Scenario files of any content: played, or refused with the place of the fault.
#include <algorithm>
#include <cstdlib>

#include "fuzz/decode.h"
#include "quelvixwinlib_simulated.h"
#include "runtimes/simulated/gatt.h"
#include "runtimes/simulated/scenario_player.h"
#include "runtimes/simulated/watcher.h"

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
    // Longer, and a short interval would fill the time. No call is made: it might be told to hang.
    OrvWorld_PassTime(5);
    return 0;
}
