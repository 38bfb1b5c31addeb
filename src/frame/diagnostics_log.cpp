#include "frame/diagnostics_log.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/log_file.h"
#include "platform/runtime.h"
#include "platform/system.h"
#include "platform/text_buffer.h"
#include "quelvixwinlib.h"

namespace orv {

DiagnosticsLog diagnosticsLog;

namespace {

void AppendPadded(TextBuffer& line, int value, int firstPlace) {
    for (int place = firstPlace; place > 0; place /= 10) {
        line.Append(static_cast<char>('0' + value / place % 10));
    }
}

// Appends the local time as "hh:mm:ss.mmm" and a tab. Reads the clock once, so that seconds and
// milliseconds belong to the same moment.
void AppendStamp(TextBuffer& line) {
    const INT64 sinceEpoch = runtime::SystemTimeMs();
    const std::tm time = system::ToLocalTime(static_cast<std::time_t>(sinceEpoch / 1000));
    AppendPadded(line, time.tm_hour, 10);
    line.Append(':');
    AppendPadded(line, time.tm_min, 10);
    line.Append(':');
    AppendPadded(line, time.tm_sec, 10);
    line.Append('.');
    AppendPadded(line, static_cast<int>(sinceEpoch % 1000), 100);
    line.Append('\t');
}

// Appends text. A line feed becomes carriage return and line feed on every platform.
void AppendTranslated(TextBuffer& line, std::string_view text) {
    while (!text.empty()) {
        const std::size_t lineFeed = std::min(text.find('\n'), text.size());
        line.Append(text.substr(0, lineFeed));
        if (lineFeed == text.size()) {
            return;
        }
        line.Append("\r\n");
        text.remove_prefix(lineFeed + 1);
    }
}

bool WriteLine(std::string_view text) {
    TextBuffer line;
    line.Reserve(text.size() + 16);
    AppendStamp(line);
    AppendTranslated(line, text);
    line.Append("\r\n");
    const Lock lock(diagnosticsLog.mutex);
    return system::AppendToFile(diagnosticsLog.path, line.View());
}

bool StartLog() {
    char module[system::LongestPath];
    if (!system::ReadModulePath(module)) {
        return false;
    }
    const Lock lock(diagnosticsLog.mutex);
    strcpy(diagnosticsLog.path, module);
    strcat(diagnosticsLog.path, ".log");
    if (!system::EmptyFile(diagnosticsLog.path)) {
        return false;
    }
    // Enables the log last and under the lock: no line may be written before the file is empty.
    diagnosticsLog.enabled.exchange(true);
    return true;
}

// Runs `body`. Returns -1 if it throws, and logs nothing, because the log itself has failed.
template <typename Body>
ResultCode RunLogExport(Body&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return ORV_FAILED;
    }
}

}  // namespace

void AppendLogLine(std::string_view text) noexcept {
    RunLogExport([text] { return WriteLine(text) ? 0 : ORV_FAILED; });
}

}  // namespace orv

using namespace orv;

extern "C" ResultCode Logging_Enable(void) {
    diagnosticsLog.enabled.exchange(false);
    return RunLogExport([] { return StartLog() ? 0 : ORV_FAILED; });
}

extern "C" ResultCode Logging_Disable(void) {
    diagnosticsLog.enabled.exchange(false);
    return 0;
}

extern "C" ResultCode Logging_AppendLine(const char* text, std::int32_t length) {
    if (!diagnosticsLog.IsEnabled() || (!text && length > 0)) {
        return ORV_FAILED;
    }
    constexpr std::int32_t StampLength = 14;  // 12 bytes of time, a tab and the final line feed
    const std::int32_t used = std::max(length, 0);
    return RunLogExport([text, used]() -> ResultCode {
        if (!WriteLine({text, static_cast<std::size_t>(used)})) {
            return ORV_FAILED;
        }
        return used <= std::numeric_limits<ResultCode>::max() - StampLength
                   ? used + StampLength
                   : std::numeric_limits<ResultCode>::max();
    });
}
