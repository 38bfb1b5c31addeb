// The reader on logs of every way in which an operation that the library waits for can end.
#include "support/waits.h"

#include "host.h"
#include "orv/log/wait_times.h"

namespace orv {
namespace {

using log::Cause;

struct Export {
    const char* name;
    std::vector<std::int32_t> operations;  // in the order of the export's waits
    ResultCode (*call)();
};

const Export Exports[] = {
    {"Available", {0, 1}, [] { return BluetoothAvailable(); }},
    {"Connect", {2, 3, 4, 5, 6}, [] { return OrvDevice_Connect(Address); }},
    {"Disconnect", {6}, [] { return OrvDevice_Disconnect(Address); }},
    {"Send", {7}, [] { return OrvDevice_Send(Address, 2, Sequence(2).data()); }},
};

Cause CauseOf(std::int32_t operation, const WaitEnding& ending) {
    switch (ending.manner) {
        case OrvManner_After:
        case OrvManner_Never:
            return Cause::LimitPassed;
        case OrvManner_EndsAs:
            return Cause::Ended;
        case OrvManner_EmptyList:
            return Cause::NotOffered;
        case OrvManner_Status:
            return Cause::Refused;
        case OrvManner_NullResult:
            return operation == 0   ? Cause::NoAdapter
                   : operation == 1 ? Cause::NoRadioOn
                   : operation == 2 ? Cause::UnknownDevice
                                    : Cause::Refused;
        default:
            return ending.value == NoMemory ? Cause::OutOfMemory : Cause::SystemFailure;
    }
}

// How the host logs, and what the reader is told of it.
struct Logging {
    const char* name;
    bool results;
    log::Threads threads;
};

class EveryEnding : public WorldTest, public testing::WithParamInterface<Logging> {
  protected:
    bool results = GetParam().results;
    log::Call FirstCall() const { return ReadLog(GetParam().threads).calls.front(); }

    // `lateBefore`: every earlier wait of the export takes so long.
    void Check(const Export& row, int step, const WaitEnding& ending, std::int32_t lateBefore) {
        const std::int32_t operation = row.operations[static_cast<std::size_t>(step)];
        const auto machine = [](std::int32_t which) { return which < 2 ? 0 : Address; };
        SCOPED_TRACE(std::string(row.name) + ' ' + std::to_string(operation) + ' ' + ending.name +
                     " after " + std::to_string(lateBefore));
        Logging_Enable();
        for (int before = 0; before < step; ++before) {
            const std::int32_t earlier = row.operations[static_cast<std::size_t>(before)];
            OrvWorld_Answer(machine(earlier), earlier, OrvManner_After, lateBefore);
        }
        OrvWorld_Answer(machine(operation), operation, ending.manner, ending.value);
        const ResultCode result = CallLogged(results, row.call);
        for (const std::int32_t each : row.operations) {
            OrvWorld_Answer(machine(each), each, OrvManner_Standard, 0);
        }
        OrvWorld_PassTime(4000);
        OrvScanner_GetDeviceCount(0);  // the next call, which bounds the one before

        const log::Call call = FirstCall();
        EXPECT_TRUE(call.result.value_or(result) == result);
        EXPECT_EQ(call.resultLogged, results);
        if (result == -1) {
            ExpectNamed(call, CauseOf(operation, ending), row.operations.size() > 1 ? step : -1);
            if (results && lateBefore == 0) {  // then the time alone tells the limit from a no
                EXPECT_EQ(log::Explain(call).front().cause == Cause::LimitPassed,
                          ending.ms >= log::WaitLimit);
            }
        } else if (ending.ms >= log::WaitLimit && results) {
            ExpectNamed(call, Cause::LimitPassed);
        }
    }
};

TEST_P(EveryEnding, IsNamed) {
    for (const Export& row : Exports) {
        for (int step = 0; step < static_cast<int>(row.operations.size()); ++step) {
            const std::int32_t operation = row.operations[static_cast<std::size_t>(step)];
            for (const auto& [which, ending] : Endings({operation})) {
                for (const std::int32_t late : {0, 1300}) {
                    if (row.call == Exports[2].call || row.call == Exports[3].call) {
                        OrvDevice_Connect(Address);
                    }
                    Check(row, step, ending, late);
                    while (OrvDevice_Disconnect(Address) == 0) {
                    }
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Logging, EveryEnding,
                         testing::Values(Logging{"ResultLines", true, log::Threads::One},
                                         Logging{"OneThread", false, log::Threads::One},
                                         Logging{"ManyThreads", false, log::Threads::Many}),
                         RowName);

// The n-th call into the system fails, for each n.
TEST_P(EveryEnding, HasItsFailingCallNamed) {
    for (std::int32_t n = 1, result = -1; result != 0; ++n) {
        SCOPED_TRACE(n);
        Logging_Enable();
        OrvWorld_FailCall(n, Fails);
        result = CallLogged(results, [] { return OrvDevice_Connect(Address); });
        OrvWorld_FailCall(0, 0);
        const log::Call call = FirstCall();
        EXPECT_EQ(call.result.value_or(result), result);
        if (result == -1) {
            ExpectNamed(call, Cause::SystemFailure);
        }
    }
}

}  // namespace
}  // namespace orv
