// The diagnostics log: a text file beside the library's own file, one line per event.
#pragma once

#include <atomic>
#include <string_view>

#include "platform/mutex.h"
#include "platform/system.h"

namespace orv {

// Process-wide. Needs no code to create and none to destroy, so it works from the first instruction
// after load to the last before unload.
//
// Threads: `enabled` is read without the lock. `lock` is held for the open, write and close of one
// line, and is a leaf: never take it with another lock of the library held.
struct DiagnosticsLog {
    std::atomic<bool> enabled{false};
    Mutex lock;
    // Zero-terminated. Kept when the log is switched off.
    char path[system::LongestPath + sizeof ".log"] GUARDED_BY(lock) = {};

    // A caller that composes a line can spare itself the work when this is false.
    bool IsEnabled() const { return enabled.load(std::memory_order_relaxed); }
};

extern DiagnosticsLog diagnosticsLog;

// One line of the library's own. Its failure is nobody's business. Never throws.
void AppendLogLine(std::string_view text) noexcept;

}  // namespace orv
