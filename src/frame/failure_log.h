#pragma once

namespace orv {

// Writes the text of the current exception to the log. Call it in a catch block while the thread
// holds no lock of the library. Never throws.
void LogCurrentException() noexcept;

}  // namespace orv
