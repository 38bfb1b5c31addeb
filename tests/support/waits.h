// The ways in which a wait of the library can end, run through for each operation it waits for.
#pragma once

#include <tuple>

#include "world.h"

namespace orv {

enum class Ends { Completed, Refused, Raised, ResultRaised };
struct WaitEnding {
    const char* name;
    std::int32_t manner;
    std::int32_t value;
    Ends ends;
    std::int64_t ms = 0;                 // until it ends
    const char* line = PlatformFailure;  // where it is raised
};
extern const std::vector<WaitEnding> WaitEndings;
std::ostream& operator<<(std::ostream& out, const WaitEnding& ending);

using OperationEnding = std::tuple<std::int32_t, WaitEnding>;

// What an export makes of a wait that ended: its result when it completed and when it was refused,
// and whether it asks for the operation's result at all.
struct WaitRule {
    ResultCode completed;
    ResultCode refused;
    bool resultIsRead;
};

class WaitTest : public WorldTest, public testing::WithParamInterface<OperationEnding> {
  protected:
    void SetUp() override;

    // Arranges the row's answer, expects result, lines and duration of `call`, lets late answers
    // come and arranges the standard answer again. Gives whether the call succeeded.
    bool ExpectAnswered(BluetoothAddress address, const std::string& trace, ResultCode (*call)(),
                        const WaitRule& rule);
};

std::string EndingName(const testing::TestParamInfo<OperationEnding>& row);

}  // namespace orv
