#include "orv/terminal/printable.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace orv {

namespace {

constexpr char32_t Replacement = 0xFFFD;

struct Range {
    char32_t first;
    char32_t last;
};

template <std::size_t Count>
bool IsIn(const Range (&ranges)[Count], char32_t code) {
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [&](Range range) { return range.first <= code && code <= range.last; });
}

// Control characters, line and paragraph separators, invisible characters, and characters that
// change the writing direction.
constexpr Range Harmful[] = {{0x00, 0x1F},     {0x7F, 0x9F},      {0xAD, 0xAD},
                             {0x061C, 0x061C}, {0x180E, 0x180E},  {0x200B, 0x200F},
                             {0x2028, 0x202E}, {0x2060, 0x206F},  {0xFEFF, 0xFEFF},
                             {0xFFF9, 0xFFFB}, {0xE0000, 0xE0FFF}};

// Characters that a terminal draws over the previous one.
constexpr Range Combining[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD},
                               {0x064B, 0x065F}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E},
                               {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x20D0, 0x20FF},
                               {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}};

constexpr Range Wide[] = {
    {0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0x4DBF},   {0x4E00, 0xA4CF},  {0xA960, 0xA97F},
    {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},  {0xFFE0, 0xFFE6},
    {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

std::size_t ColumnsOf(char32_t code) {
    return IsIn(Combining, code) ? 0 : IsIn(Wide, code) ? 2 : 1;
}

// Returns the length of a UTF-8 character that begins with `lead`, or 0 if none does.
std::size_t LengthFor(unsigned char lead) {
    return lead < 0x80   ? 1
           : lead < 0xC2 ? 0
           : lead < 0xE0 ? 2
           : lead < 0xF0 ? 3
           : lead < 0xF5 ? 4
                         : 0;
}

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

Character FirstCharacter(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = LengthFor(lead);
    if (length <= 1) {
        return {length == 1 ? lead : Replacement, 1};
    }
    if (text.size() < length) {
        return {Replacement, 1};
    }
    char32_t code = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (!IsContinuation(text[i])) {
            return {Replacement, 1};
        }
        code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    constexpr char32_t Smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < Smallest[length] || code > 0x10FFFF || surrogate) {
        return {Replacement, 1};
    }
    return {code, length};
}

void AppendUtf8(std::string& text, char32_t code) {
    const auto append = [&](char32_t byte) { text += static_cast<char>(byte); };
    if (code < 0x80) {
        append(code);
        return;
    }
    const int further = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    append((0xFF00U >> (further + 1) & 0xFFU) | code >> (6 * further));
    for (int i = further - 1; i >= 0; --i) {
        append(0x80U | (code >> (6 * i) & 0x3FU));
    }
}

std::string Printable(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Character next = FirstCharacter(text);
        if (IsIn(Harmful, next.code)) {
            char shown[16];
            const char* format = next.code < 0x80 ? "\\x%02X" : "\\u%04X";
            snprintf(shown, sizeof shown, format, static_cast<unsigned>(next.code));
            result += shown;
        } else {
            AppendUtf8(result, next.code);
        }
        text.remove_prefix(next.bytes);
    }
    return result;
}

std::size_t ColumnsOf(std::string_view printable) {
    std::size_t columns = 0;
    while (!printable.empty()) {
        const Character next = FirstCharacter(printable);
        columns += ColumnsOf(next.code);
        printable.remove_prefix(next.bytes);
    }
    return columns;
}

std::string Fitted(std::string_view printable, std::size_t columns) {
    const bool cut = ColumnsOf(printable) > columns;
    const std::size_t room = cut && columns > 0 ? columns - 1 : columns;
    std::string result;
    std::size_t used = 0;
    while (!printable.empty()) {
        const Character next = FirstCharacter(printable);
        if (used + ColumnsOf(next.code) > room) {
            break;
        }
        used += ColumnsOf(next.code);
        result += printable.substr(0, next.bytes);
        printable.remove_prefix(next.bytes);
    }
    if (cut && columns > 0) {
        AppendUtf8(result, 0x2026);
        ++used;
    }
    return result.append(columns - used, ' ');
}

std::size_t UnfinishedBytes(std::string_view text) {
    for (std::size_t bytes = 1; bytes <= 3 && bytes <= text.size(); ++bytes) {
        const char lead = text[text.size() - bytes];
        if (!IsContinuation(lead)) {
            return LengthFor(static_cast<unsigned char>(lead)) > bytes ? bytes : 0;
        }
    }
    return 0;
}

}  // namespace orv
