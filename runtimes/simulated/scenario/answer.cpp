#include "quelvixwinlib_simulated.h"
#include "runtimes/simulated/scenario/scenario.h"

namespace orv::simulated {

namespace {

using Word = ScenarioField::Word;

INT32 ReadOperation(const ScenarioField& field, bool ofMachine) {
    if (ofMachine) {
        return field.OneOf(
            {{"FindAdapter", OrvOperation_FindAdapter}, {"FindRadios", OrvOperation_FindRadios}});
    }
    return field.OneOf({{"FindDevice", OrvOperation_FindDevice},
                        {"FindServices", OrvOperation_FindServices},
                        {"RequestAccess", OrvOperation_RequestAccess},
                        {"FindCharacteristics", OrvOperation_FindCharacteristics},
                        {"WriteDescriptor", OrvOperation_WriteDescriptor},
                        {"WriteValue", OrvOperation_WriteValue}});
}

// The status is a DeviceAccessStatus for RequestAccess, otherwise a GattCommunicationStatus.
INT32 ReadStatus(const ScenarioField& field, INT32 operation) {
    if (operation == OrvOperation_RequestAccess) {
        return field.OneOf(
            {{"Unspecified", 0}, {"Allowed", 1}, {"DeniedByUser", 2}, {"DeniedBySystem", 3}});
    }
    return field.OneOf(
        {{"Success", 0}, {"Unreachable", 1}, {"ProtocolError", 2}, {"AccessDenied", 3}});
}

INT32 ReadEnding(const ScenarioField& field) {
    return field.OneOf({{"Completed", static_cast<INT32>(AsyncStatus::Completed)},
                        {"Canceled", static_cast<INT32>(AsyncStatus::Canceled)},
                        {"Error", static_cast<INT32>(AsyncStatus::Error)}});
}

}  // namespace

std::pair<INT32, Answer> ReadAnswer(const ScenarioField& field, bool ofMachine) {
    const ScenarioObject object(
        field, {"operation", "atOnce", "after", "never", "endsAs", "startFails",
                "registrationFails", "resultFails", "nullResult", "status", "emptyList"});
    const INT32 operation = ReadOperation(object.Get("operation"), ofMachine);
    Answer answer;
    const auto arrange = [&](const char* name, INT32 manner, auto read) {
        if (const auto found = object.Find(name)) {
            answer.Set(manner, read(*found));
        }
    };
    const auto code = [](const ScenarioField& value) { return value.Code(); };
    const auto flag = [](const ScenarioField& value) { return value.Boolean() ? 1 : 0; };
    if (object.Boolean("atOnce", false)) {
        answer.Set(OrvAnswer_AtOnce, 0);
    }
    arrange("after", OrvAnswer_After, [](const auto& value) { return value.Number(0, INT32_MAX); });
    if (object.Boolean("never", false)) {
        answer.Set(OrvAnswer_Never, 0);
    }
    arrange("endsAs", OrvAnswer_EndsAs, ReadEnding);
    arrange("startFails", OrvAnswer_StartFails, code);
    arrange("registrationFails", OrvAnswer_RegistrationFails, code);
    arrange("resultFails", OrvAnswer_ResultFails, code);
    arrange("nullResult", OrvAnswer_NullResult, flag);
    arrange("status", OrvAnswer_Status,
            [&](const auto& value) { return ReadStatus(value, operation); });
    arrange("emptyList", OrvAnswer_EmptyList, flag);
    return {operation, answer};
}

MemberFault ReadMemberFault(const ScenarioField& field) {
    const ScenarioObject object(field, {"member", "code", "hang"});
    const ScenarioField member = object.Get("member");
    MemberFault fault;
    fault.member = member.Text();
    if (!CallRecorder::HasMember(fault.member.c_str())) {
        member.Refuse("is \"" + fault.member + "\", which no simulated class has",
                      "a name as in OrvWorld_CallAt, such as \"GattDeviceService.Close\",");
    }
    const std::string kind = object.OneOf({"code", "hang"});
    fault.hangs = kind == "hang" && object.Get("hang").Boolean();
    fault.failure = kind == "code" ? object.Get("code").Code() : S_OK;
    return fault;
}

}  // namespace orv::simulated
