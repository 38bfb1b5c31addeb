// The terminal around this program, or its absence.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orv::terminal {

// To be called first. Returns the program's arguments, without its name, as UTF-8.
std::vector<std::string> Start(int argc, char** argv);

// Whether what is printed is seen by a person, on something that knows escape sequences.
bool IsOutput();
// Whether what is read is typed by a person.
bool IsInput();

struct Size {
    std::size_t columns;
    std::size_t rows;
};
Size SizeOf();

// From the first call on, Ctrl-C and requests to end are no longer the end of the program.
void CatchInterrupts();
bool IsInterrupted();

// Waits that long. False: it was interrupted, maybe before.
bool Pause(int milliseconds);

// While this lives, what is typed is neither shown nor gathered into lines by the system.
class RawInput {
  public:
    RawInput();
    ~RawInput();
    RawInput(const RawInput&) = delete;
    RawInput& operator=(const RawInput&) = delete;
};

// Waits for input, UTF-8 where it is typed. Nothing: the input has ended.
std::optional<std::string> ReadInput();

// Writes all of it to the standard output, at once.
void Write(const std::string& text);

}  // namespace orv::terminal
