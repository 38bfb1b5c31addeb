// How a caught failure becomes a line of the log.
#pragma once

namespace orv {

// Writes the text of the failure that is being handled. Call it in a catch block, with no lock of
// the library held. Never throws.
void LogCurrentException() noexcept;

}  // namespace orv
