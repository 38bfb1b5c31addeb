#pragma once

#include <string_view>
#include <tuple>

#include "frame/diagnostics_log.h"
#include "platform/text_buffer.h"

namespace orv {

// Writes the line that logs a call: the name, then each argument in decimal after a space. Does
// nothing while the log is off. Composing a line of usual length needs no heap and cannot fail.
template <typename... Arguments>
void Trace(std::string_view name, Arguments... arguments) {
    if (!diagnosticsLog.IsEnabled()) {
        return;
    }
    TextBuffer line;
    line.Append(name);
    ((line.Append(' '), line.AppendNumber(arguments)), ...);
    AppendLogLine(line.View());
}

// The name and arguments of an exported function, stored until the call is logged.
template <typename... Arguments>
struct Traced {
    explicit Traced(std::string_view exportName, Arguments... traced)
        : name(exportName), arguments(traced...) {}
    std::string_view name;
    std::tuple<Arguments...> arguments;
};

}  // namespace orv
