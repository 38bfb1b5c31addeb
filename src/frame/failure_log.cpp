#include "frame/failure_log.h"

#include <cxxabi.h>

#include <exception>
#include <string_view>

#include "frame/diagnostics_log.h"
#include "platform/failure.h"
#include "platform/text_buffer.h"

namespace orv {

namespace {

struct FailureText {
    std::string_view own;  // text of what() in this build
    std::string_view logged;
};

// Makes the logged text of a failure independent of the standard library.
constexpr FailureText FailureTexts[] = {
    {"std::bad_alloc", "bad allocation"},
    {"std::bad_array_new_length", "bad array new length"},
    {"std::bad_cast", "bad cast"},
    {"std::exception", "Unknown exception"},
};

// Failures of containers that reached their size limit. `own` is the beginning of what(). A text
// that begins with "basic_string::" and contains a space reports another failure.
constexpr FailureText LimitTexts[] = {
    {"basic_string::", "string too long"},
    {"cannot create std::deque larger", "deque<T> too long"},
};
bool IsLimit(std::string_view own, std::string_view beginning) {
    return own.substr(0, beginning.size()) == beginning &&
           (beginning.back() != ':' || own.find(' ') == own.npos);
}

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
    for (const FailureText& text : LimitTexts) {
        if (IsLimit(own, text.own)) {
            return text.logged;
        }
    }
    return own;
}

// Rethrows the current exception to inspect it. std::exception_ptr would need memory, which may
// have run out.
void LogFailure() {
    try {
        throw;
    } catch (const std::exception& standard) {
        TextBuffer line;
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
    if (!abi::__cxa_current_exception_type()) {
        AppendLogLine("Exception: none");
        return;
    }
    // Catches failures of the logging itself: what() can throw, and a long line can exhaust memory.
    try {
        LogFailure();
    } catch (...) {
        AppendLogLine("Exception: error retrieving exception");
    }
}

}  // namespace orv
