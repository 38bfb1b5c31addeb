// Tests the log reader with every way in which a platform operation can end.
#include <cstring>
#include <map>
#include <random>

#include "host.h"
#include "orv/log/infer/causes.h"

namespace orv {
namespace {

using log::Cause;

// How an operation ends. Refused: the call fails without a failure line. Raised: a system call
// fails, so the log has a failure line. ResultRefused and ResultRaised: the same, but only if the
// library reads the operation's result.
enum class Ends { Completed, Refused, Raised, ResultRefused, ResultRaised };
struct WaitEnding {
    const char* name;
    std::int32_t manner;
    std::int32_t value;
    Ends ends;
    std::int64_t ms = 0;
    const char* operations = "01234567";  // digits of operations that can end like this
};

const WaitEnding WaitEndings[] = {
    {"Standard", OrvAnswer_Standard, 0, Ends::Completed},
    {"AtOnce", OrvAnswer_AtOnce, 1, Ends::Completed},
    {"After1999", OrvAnswer_After, 1999, Ends::Completed, 1999},
    {"After2001", OrvAnswer_After, 2001, Ends::Refused, 2000},
    {"Never", OrvAnswer_Never, 1, Ends::Refused, 2000},
    {"Canceled", OrvAnswer_EndsAs, 2, Ends::Refused},
    {"Error", OrvAnswer_EndsAs, 3, Ends::Refused},
    {"StartFails", OrvAnswer_StartFails, Fails, Ends::Raised},
    {"StartLacksMemory", OrvAnswer_StartFails, NoMemory, Ends::Raised},
    {"RegistrationFails", OrvAnswer_RegistrationFails, Fails, Ends::Raised},
    {"ResultFails", OrvAnswer_ResultFails, Fails, Ends::ResultRaised},
    {"ResultLacksMemory", OrvAnswer_ResultFails, NoMemory, Ends::ResultRaised},
    {"NullResult", OrvAnswer_NullResult, 1, Ends::ResultRefused, 0, "01235"},
    {"EmptyList", OrvAnswer_EmptyList, 1, Ends::ResultRaised, 0, "35"},
    // Status 0 means success, except for RequestAccess (operation 4): there, 1 means success.
    {"Status0", OrvAnswer_Status, 0, Ends::ResultRefused, 0, "4"},
    {"Status1", OrvAnswer_Status, 1, Ends::ResultRefused, 0, "3567"},
    {"Status2", OrvAnswer_Status, 2, Ends::ResultRefused, 0, "34567"},
    {"Status3", OrvAnswer_Status, 3, Ends::ResultRefused, 0, "34567"},
};

std::vector<WaitEnding> EndingsOf(std::int32_t operation) {
    std::vector<WaitEnding> rows;
    for (const WaitEnding& ending : WaitEndings) {
        if (std::strchr(ending.operations, '0' + operation) != nullptr) {
            rows.push_back(ending);
        }
    }
    return rows;
}

struct Export {
    const char* name;
    std::vector<std::int32_t> operations;  // operations that the export waits for, in order
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
        case OrvAnswer_After:
        case OrvAnswer_Never:
            return Cause::LimitPassed;
        case OrvAnswer_EndsAs:
            return Cause::Ended;
        case OrvAnswer_EmptyList:
            return Cause::NotOffered;
        case OrvAnswer_Status:
            return Cause::Refused;
        case OrvAnswer_NullResult:
            return operation == 0   ? Cause::NoAdapter
                   : operation == 1 ? Cause::NoRadioOn
                   : operation == 2 ? Cause::UnknownDevice
                                    : Cause::Refused;
        default:
            return ending.value == NoMemory ? Cause::OutOfMemory : Cause::SystemFailure;
    }
}

// Whether the host writes result lines, and how many threads the log reader assumes.
struct Logging {
    const char* name;
    bool results;
    log::Threads threads;
};

class EveryEnding : public WorldTest, public testing::WithParamInterface<Logging> {
  protected:
    bool results = GetParam().results;
    log::Call FirstCall() const { return ReadLog(GetParam().threads).calls.front(); }

    // Makes a call whose operation with index `step` ends with `ending`, and checks the reported
    // causes. Each earlier operation takes `lateBefore` ms.
    void Check(const Export& row, int step, const WaitEnding& ending, std::int32_t lateBefore) {
        const std::int32_t operation = row.operations[static_cast<std::size_t>(step)];
        const auto machine = [](std::int32_t which) { return which < 2 ? 0 : Address; };
        SCOPED_TRACE(std::string(row.name) + ' ' + std::to_string(operation) + ' ' + ending.name +
                     " after " + std::to_string(lateBefore));
        Logging_Enable();
        for (int before = 0; before < step; ++before) {
            const std::int32_t earlier = row.operations[static_cast<std::size_t>(before)];
            OrvWorld_Answer(machine(earlier), earlier, OrvAnswer_After, lateBefore);
        }
        OrvWorld_Answer(machine(operation), operation, ending.manner, ending.value);
        const ResultCode result = CallLogged(results, row.call);
        for (const std::int32_t each : row.operations) {
            OrvWorld_Answer(machine(each), each, OrvAnswer_Standard, 0);
        }
        OrvWorld_PassTime(4000);
        OrvScanner_GetDeviceCount(0);  // shows in the log that the call has ended

        const log::Call call = FirstCall();
        EXPECT_TRUE(call.result.value_or(result) == result);
        EXPECT_EQ(call.resultLogged, results);
        if (result == -1) {
            ExpectNamed(call, CauseOf(operation, ending), row.operations.size() > 1 ? step : -1);
            // Without earlier delays, the duration shows whether the wait timed out.
            if (results && lateBefore == 0) {
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
            for (const WaitEnding& ending : EndingsOf(operation)) {
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

// Makes random calls in a world with random answers, and records the true causes of failures.
class RandomWorld {
  public:
    RandomWorld(unsigned seed, bool writesResults) : random(seed), results(writesResults) {
        CallLogged(results, [] { return OrvScanner_Initialize(); });
        CallLogged(results, [] { return OrvScanner_Start(0); });
        truths.resize(2);
    }

    void Step() {
        switch (Below(9)) {
            case 0:
                Advertise(Address);
                heard = true;
                break;
            case 1:
            case 2:
                Arrange();
                break;
            case 3:
                OrvWorld_PassTime(static_cast<std::int32_t>(Below(4000)));
                break;
            case 4:
                Call(Exports[0].call, CauseOfWaits({0, 1}));
                break;
            case 5:
                links += Call(Exports[1].call, CauseOfWaits({2, 3, 4, 5, 6})) == 0 ? 1 : 0;
                break;
            case 6:
                links -=
                    Call(Exports[2].call, NoLink() ? NoLink() : CauseOfWaits({6})) == 0 ? 1 : 0;
                break;
            case 7:
                Call(Exports[3].call, NoLink() ? NoLink() : CauseOfWaits({7}));
                break;
            default:
                Call([] { return OrvDevice_Receive(Address, 1, nullptr); },
                     NoLink().value_or(Cause::NullPointer));
        }
    }

    void ExpectCausesNamed(log::Threads threads) const {
        const log::Findings findings = ReadLog(threads);
        ASSERT_EQ(findings.calls.size(), truths.size());
        for (std::size_t i = 0; i < truths.size(); ++i) {
            const log::Call& call = findings.calls[i];
            if (truths[i].failsOf) {
                ExpectNamed(call, *truths[i].failsOf);
                const log::Suspects named = Explain(call);
                EXPECT_FALSE(truths[i].heard && !named.empty() &&
                             named[0].cause == Cause::UnknownDevice);
            }
        }
    }

  private:
    struct Fate {
        std::optional<Cause> failsOf;
        bool heard = false;  // an advertisement arrived before the call
    };

    std::size_t Below(std::size_t limit) { return random() % limit; }

    void Arrange() {
        const auto operation = static_cast<std::int32_t>(Below(8));
        const auto all = EndingsOf(operation);
        const WaitEnding& ending = all[Below(all.size())];
        const BluetoothAddress machine = operation < 2 ? 0 : Address;
        OrvWorld_Answer(machine, operation, OrvAnswer_Standard, 0);  // removes an earlier answer
        OrvWorld_Answer(machine, operation, ending.manner, ending.value);
        endings[operation] = ending;
    }

    std::optional<Cause> NoLink() const {
        return links == 0 ? std::optional(Cause::NoLink) : std::nullopt;
    }
    // Returns the cause of the first operation that fails. A function of the library that waits for
    // only one operation does not read the operation's result, so an error result is no failure.
    std::optional<Cause> CauseOfWaits(const std::vector<std::int32_t>& operations) const {
        const Ends last = operations.size() > 1 ? Ends::ResultRaised : Ends::Raised;
        for (const std::int32_t operation : operations) {
            const auto ending = endings.find(operation);
            if (ending != endings.end() && ending->second.ends != Ends::Completed &&
                ending->second.ends <= last) {
                return CauseOf(operation, ending->second);
            }
        }
        return std::nullopt;
    }

    ResultCode Call(ResultCode (*call)(), std::optional<Cause> cause) {
        const ResultCode result = CallLogged(results, call);
        truths.push_back({result == -1 ? cause : std::nullopt, heard});
        return result;
    }

    std::mt19937 random;
    bool results;
    bool heard = false;
    int links = 0;
    std::map<std::int32_t, WaitEnding> endings;
    std::vector<Fate> truths;
};

TEST_P(EveryEnding, IsNamedInRandomWorlds) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        WorldTest::TearDown();
        WorldTest::SetUp();
        RandomWorld world(seed, results);
        for (int step = 0; step < 40; ++step) {
            world.Step();
        }
        OrvWorld_PassTime(20'000);
        world.ExpectCausesNamed(GetParam().threads);
    }
}

INSTANTIATE_TEST_SUITE_P(Logging, EveryEnding,
                         testing::Values(Logging{"ResultLines", true, log::Threads::One},
                                         Logging{"OneThread", false, log::Threads::One},
                                         Logging{"ManyThreads", false, log::Threads::Many}),
                         RowName);

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
