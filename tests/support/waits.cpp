// The table of all endings of a wait, and its one body.
#include "waits.h"

#include <cstring>

namespace orv {
namespace {

const char* const Operations[] = {"FindAdapter",     "FindRadios",    "FindDevice",
                                  "FindServices",    "RequestAccess", "FindCharacteristics",
                                  "WriteDescriptor", "WriteValue"};

const WaitEnding WaitEndings[] = {
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
    {"NullResult", OrvManner_NullResult, 1, Ends::ResultRefused, 0, "", "01235"},
    {"EmptyList", OrvManner_EmptyList, 1, Ends::ResultRaised, 0, PlatformFailure, "35"},
    // 0 is success for all but the access, which is granted by 1.
    {"Status0", OrvManner_Status, 0, Ends::ResultRefused, 0, "", "4"},
    {"Status1", OrvManner_Status, 1, Ends::ResultRefused, 0, "", "3567"},
    {"Status2", OrvManner_Status, 2, Ends::ResultRefused, 0, "", "34567"},
    {"Status3", OrvManner_Status, 3, Ends::ResultRefused, 0, "", "34567"},
};

}  // namespace

std::vector<OperationEnding> Endings(const std::vector<std::int32_t>& operations) {
    std::vector<OperationEnding> rows;
    for (const std::int32_t operation : operations) {
        for (const WaitEnding& ending : WaitEndings) {
            if (std::strchr(ending.operations, '0' + operation) != nullptr) {
                rows.emplace_back(operation, ending);
            }
        }
    }
    return rows;
}

std::string EndingName(const testing::TestParamInfo<OperationEnding>& row) {
    return std::string(Operations[row.param.first]) + row.param.second.name;
}

void PrintTo(const OperationEnding& row, std::ostream* out) {
    *out << Operations[row.first] << ' ' << row.second.name;
}

void WaitTest::SetUp() {
    WorldTest::SetUp();
    if (GetParam().second.manner == OrvManner_After && OrvWorld_TimeIsSimulated() == 0) {
        GTEST_SKIP() << "real time cannot hit a limit to the millisecond";
    }
}

bool WaitTest::ExpectAnswered(BluetoothAddress address, const std::string& trace,
                              ResultCode (*call)(), const WaitRule& rule) {
    const std::int32_t operation = GetParam().first;
    const WaitEnding& ending = GetParam().second;
    const bool raised =
        ending.ends == Ends::Raised || (ending.ends == Ends::ResultRaised && rule.resultIsRead);
    const bool refused =
        ending.ends == Ends::Refused || (ending.ends == Ends::ResultRefused && rule.resultIsRead);
    const ResultCode result = raised ? -1 : refused ? rule.refused : rule.completed;
    OrvWorld_Answer(address, operation, ending.manner, ending.value);
    ExpectTakes(ending.ms, [&] {
        ExpectCall(call, result, raised ? Lines{trace, ending.line} : Lines{trace});
    });
    if (OrvWorld_TimeIsSimulated() != 0) {
        OrvWorld_PassTime(4000);
    }
    OrvWorld_Answer(address, operation, OrvManner_Standard, 0);
    return result != -1;
}

}  // namespace orv
