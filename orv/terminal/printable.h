// Makes untrusted text harmless: names and bytes of devices, paths, lines of a log.
#pragma once

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace orv {

// The first character of a text and its length in bytes. A byte that does not begin a character
// becomes U+FFFD, with the length 1.
struct Character {
    char32_t code;
    std::size_t bytes;
};
Character FirstCharacter(std::string_view text);

void AppendUtf8(std::string& text, char32_t code);

// Returns valid UTF-8 for one line of a terminal. Escapes control characters, line ends and
// characters that change the writing direction, for example to \x1B or \u202E. Bytes that are not
// UTF-8 become U+FFFD. Backslashes are not escaped, so the text cannot be converted back.
std::string Printable(std::string_view text);

std::size_t ColumnsOf(std::string_view printable);

// Cuts or fills the text to exactly `columns`. A cut text ends with "…".
std::string Fitted(std::string_view printable, std::size_t columns);

// Returns a text such as "1 byte" or "2 bytes".
template <std::integral Number>
std::string Counted(Number count, const char* noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

// Returns the length of an incomplete UTF-8 character at the end, or 0.
std::size_t UnfinishedBytes(std::string_view text);

}  // namespace orv
