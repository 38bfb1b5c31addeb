#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orv::terminal {

// Call this first. Returns the arguments as UTF-8, without the program's name.
std::vector<std::string> Start(int argc, char** argv);

// Returns whether the output is a terminal that supports escape sequences.
bool IsOutput();
bool IsInput();

struct Size {
    std::size_t columns;
    std::size_t rows;
};
Size SizeOf();

// After this, the first interrupt, such as Ctrl-C, only sets IsInterrupted. The second one ends the
// program.
void CatchInterrupts();
bool IsInterrupted();
// Returns the interrupt's name for messages, such as "Ctrl-C" or "SIGTERM".
const char* Interruption();

// Waits. Returns false at once if there is or was an interrupt.
bool Pause(int milliseconds);

// While this object exists, the system does not show typed characters or buffer them by line.
class RawInput {
  public:
    RawInput();
    ~RawInput();
    RawInput(const RawInput&) = delete;
    RawInput& operator=(const RawInput&) = delete;
};

// Waits for input and returns it; typed input is UTF-8. Returns nothing at the end of the input.
std::optional<std::string> ReadInput();

// Writes the whole text to the standard output, unbuffered.
void Write(const std::string& text);

}  // namespace orv::terminal
