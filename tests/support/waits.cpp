// The table of all endings of a wait, and its one body.
#include "waits.h"

namespace orv {

const std::vector<WaitEnding> WaitEndings = {
    {"Standard", OrvManner_Standard, 0, Ends::Completed},
    {"AtOnce", OrvManner_AtOnce, 1, Ends::Completed},
    {"After1999", OrvManner_After, 1999, Ends::Completed, 1999},
    {"After2001", OrvManner_After, 2001, Ends::Refused, 2000},
    {"Never", OrvManner_Never, 1, Ends::Refused, 2000},
    {"Canceled", OrvManner_EndsAs, 2, Ends::Refused},
    {"Error", OrvManner_EndsAs, 3, Ends::Refused},
    {"StartFails", OrvManner_StartFails, Fails, Ends::Raised},
    {"StartLacksMemory", OrvManner_StartFails, NoMemory, Ends::Raised, 0, OutOfMemory},
    {"RegistrationFails", OrvManner_RegistrationFails, Fails, Ends::Raised},
    {"ResultFails", OrvManner_ResultFails, Fails, Ends::ResultRaised},
    {"ResultLacksMemory", OrvManner_ResultFails, NoMemory, Ends::ResultRaised, 0, OutOfMemory},
};

std::ostream& operator<<(std::ostream& out, const WaitEnding& ending) {
    return out << ending.name;
}

void WaitTest::SetUp() {
    WorldTest::SetUp();
    if (std::get<1>(GetParam()).manner == OrvManner_After && OrvWorld_TimeIsSimulated() == 0) {
        GTEST_SKIP() << "real time cannot hit a limit to the millisecond";
    }
}

bool WaitTest::ExpectAnswered(BluetoothAddress address, const std::string& trace,
                              ResultCode (*call)(), const WaitRule& rule) {
    const auto& [operation, ending] = GetParam();
    const bool raised =
        ending.ends == Ends::Raised || (ending.ends == Ends::ResultRaised && rule.resultIsRead);
    const ResultCode result = raised                         ? -1
                              : ending.ends == Ends::Refused ? rule.refused
                                                             : rule.completed;
    OrvWorld_Answer(address, operation, ending.manner, ending.value);
    const std::int64_t ms = ending.ms;
    const Lines lines = raised ? Lines{trace, ending.line} : Lines{trace};
    ExpectTakes(ms, [&] { ExpectCall(call, result, lines); });
    if (OrvWorld_TimeIsSimulated() != 0) {
        OrvWorld_PassTime(4000);
    }
    OrvWorld_Answer(address, operation, OrvManner_Standard, 0);
    return result != -1;
}

std::string EndingName(const testing::TestParamInfo<OperationEnding>& row) {
    const char* const names[] = {"FindAdapter",     "FindRadios",    "FindDevice",
                                 "FindServices",    "RequestAccess", "FindCharacteristics",
                                 "WriteDescriptor", "WriteValue"};
    return std::string(names[std::get<0>(row.param)]) + std::get<1>(row.param).name;
}

}  // namespace orv
