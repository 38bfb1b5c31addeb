#pragma once

#include <atomic>
#include <string_view>

#include "platform/loaded_module.h"
#include "platform/mutex.h"

namespace orv {

// The diagnostics log, a text file beside the library's own file with one line per event. It is
// constant-initialized and never destroyed, so that it can be used from load to unload.
//
// Threads: `enabled` is read without the mutex. A thread holds `mutex`, and no other lock of the
// library, while it opens the file, writes one line and closes the file.
struct DiagnosticsLog {
    std::atomic<bool> enabled{false};
    Mutex mutex;
    // Zero-terminated path of the log file. The path is kept when the log is switched off.
    char path[system::LongestPath + sizeof ".log"] GUARDED_BY(mutex) = {};

    bool IsEnabled() const { return enabled.load(std::memory_order_relaxed); }
};

extern DiagnosticsLog diagnosticsLog;

// Writes one line to the log. Ignores failures and never throws.
void AppendLogLine(std::string_view text) noexcept;

}  // namespace orv
