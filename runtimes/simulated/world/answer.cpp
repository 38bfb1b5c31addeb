#include "runtimes/simulated/world/answer.h"

#include "quelvixwinlib_simulated.h"

namespace orv::simulated {

namespace {

constexpr HRESULT E_ABORT = Hresult(0x80004004);

}  // namespace

Answer Answer::Silence() {
    Answer answer;
    answer.timing = Timing::Never;
    return answer;
}

bool Answer::Set(INT32 manner, INT32 value) {
    switch (manner) {
        case OrvAnswer_Standard:
            *this = Answer();
            return true;
        case OrvAnswer_AtOnce:
            timing = Timing::AtOnce;
            return true;
        case OrvAnswer_After:
            if (value < 0) {
                return false;
            }
            timing = Timing::After;
            delay = std::chrono::milliseconds(value);
            return true;
        case OrvAnswer_Never:
            timing = Timing::Never;
            return true;
        case OrvAnswer_EndsAs:
            if (value < static_cast<INT32>(AsyncStatus::Completed) ||
                value > static_cast<INT32>(AsyncStatus::Error)) {
                return false;
            }
            ending = static_cast<AsyncStatus>(value);
            return true;
        case OrvAnswer_StartFails:
            startCode = value;
            return true;
        case OrvAnswer_RegistrationFails:
            registrationCode = value;
            return true;
        case OrvAnswer_ResultFails:
            resultCode = value;
            return true;
        case OrvAnswer_NullResult:
            nullResult = value != 0;
            return true;
        case OrvAnswer_Status:
            status = value;
            return true;
        case OrvAnswer_EmptyList:
            emptyList = value != 0;
            return true;
        default:
            return false;
    }
}

objects::Ending Answer::Ending() const {
    switch (ending) {
        case AsyncStatus::Canceled:
            return {ending, E_ABORT};
        case AsyncStatus::Error:
            return {ending, E_FAIL};
        default:
            return {ending, S_OK};
    }
}

}  // namespace orv::simulated
