// Text from elsewhere made harmless: names and bytes of devices, paths, lines of a log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orv {

// One character at the beginning of a text: how many bytes it takes, and which it is. A byte that
// begins no UTF-8 character stands for U+FFFD, alone.
struct Character {
    char32_t code;
    std::size_t bytes;
};
Character FirstCharacter(std::string_view text);

void AppendUtf8(std::string& text, char32_t code);

// Valid UTF-8 in any case, for a line of a terminal: control characters, line ends and what turns
// the direction of writing show as \x1B or \u202E, bytes that are no UTF-8 as U+FFFD. A backslash
// stays as it is, so this is for reading, not for reading back.
std::string Printable(std::string_view text);

// How many columns of a terminal a printable text takes.
std::size_t ColumnsOf(std::string_view printable);

// Cut or filled with spaces to exactly `columns`; where something was cut, the last is "…".
std::string Fitted(std::string_view printable, std::size_t columns);

// "1 byte", "2 bytes".
std::string Counted(std::uint64_t count, const char* noun);

// How many bytes at the end are the beginning of a UTF-8 character whose rest may still come.
std::size_t UnfinishedBytes(std::string_view text);

}  // namespace orv
