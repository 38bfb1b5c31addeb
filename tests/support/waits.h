// The ways in which an operation that the library waits for can end, run through for each
// operation.
#pragma once

#include <utility>

#include "world.h"

namespace orv {

// The last two are seen only by who asks for the operation's result.
enum class Ends { Completed, Refused, Raised, ResultRefused, ResultRaised };
struct WaitEnding {
    const char* name;
    std::int32_t manner;
    std::int32_t value;
    Ends ends;
    std::int64_t ms = 0;                  // until it ends
    const char* line = PlatformFailure;   // where it is raised
    const char* operations = "01234567";  // to which it applies
};

// One operation and how it ends; and all endings of some operations.
using OperationEnding = std::pair<std::int32_t, WaitEnding>;
std::vector<OperationEnding> Endings(const std::vector<std::int32_t>& operations);
std::string EndingName(const testing::TestParamInfo<OperationEnding>& row);
void PrintTo(const OperationEnding& row, std::ostream* out);

// What an export makes of a wait: its result when that completed and when it was refused, and
// whether it asks for the operation's result at all.
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

}  // namespace orv
