#include "frame/failure_log.h"

#include <exception>
#include <stdexcept>
#include <string_view>

#include "frame/diagnostics_log.h"
#include "platform/failure.h"
#include "platform/text.h"

namespace orv {

namespace {

struct FailureText {
    std::string_view own;  // of this toolchain's standard library
    std::string_view logged;
};

// One text per failure in every log, whichever standard library the build used.
constexpr FailureText FailureTexts[] = {
    {"std::bad_alloc", "bad allocation"},
    {"std::bad_array_new_length", "bad array new length"},
    {"std::bad_cast", "bad cast"},
    {"std::exception", "Unknown exception"},
};

// Texts of a container's size limit, which name the operation that met it.
constexpr FailureText LimitTexts[] = {
    {"basic_string", "string too long"},
    {"cannot create std::deque", "deque<T> too long"},
};

std::string_view LoggedText(const std::exception& failure) {
    const char* what = failure.what();
    if (!what) {
        RaiseFailure(E_POINTER);
    }
    const std::string_view own = what;
    for (const FailureText& text : FailureTexts) {
        if (own == text.own) {
            return text.logged;
        }
    }
    if (dynamic_cast<const std::length_error*>(&failure)) {
        for (const FailureText& text : LimitTexts) {
            if (own.substr(0, text.own.size()) == text.own) {
                return text.logged;
            }
        }
    }
    return own;
}

void LogFailure(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& standard) {
        Text line;
        line.Append("Exception: ");
        line.Append(LoggedText(standard));
        AppendLogLine(line.View());
    } catch (...) {
        AppendLogLine("Exception: unknown type");
    }
}

}  // namespace

void LogCurrentException() noexcept {
    if (!diagnosticsLog.IsEnabled()) {
        return;
    }
    const std::exception_ptr failure = std::current_exception();
    if (!failure) {
        AppendLogLine("Exception: none");
        return;
    }
    // A second guard: what() or composing the line of a long text can fail itself.
    try {
        LogFailure(failure);
    } catch (...) {
        AppendLogLine("Exception: error retrieving exception");
    }
}

}  // namespace orv
