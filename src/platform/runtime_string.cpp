#include "platform/runtime_string.h"

namespace orv {

namespace {

bool IsHighSurrogate(char32_t unit) {
    return (unit & 0xFC00) == 0xD800;
}
bool IsLowSurrogate(char32_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}

void AppendCharacter(TextBuffer& text, char32_t character) {
    const auto append = [&text](char32_t byte) { text.Append(static_cast<char>(byte)); };
    if (character < 0x80) {
        append(character);
        return;
    }
    if (character < 0x800) {
        append(0xC0 | character >> 6);
    } else {
        if (character < 0x10000) {
            append(0xE0 | character >> 12);
        } else {
            append(0xF0 | character >> 18);
            append(0x80 | (character >> 12 & 0x3F));
        }
        append(0x80 | (character >> 6 & 0x3F));
    }
    append(0x80 | (character & 0x3F));
}

}  // namespace

void RuntimeString::AppendUtf8To(TextBuffer& text) const {
    constexpr char32_t Replacement = 0xFFFD;
    UINT32 length = 0;
    const char16_t* units = WindowsGetStringRawBuffer(handle, &length);
    for (UINT32 i = 0; i < length; ++i) {
        char32_t character = units[i];
        if (IsHighSurrogate(character) && i + 1 < length && IsLowSurrogate(units[i + 1])) {
            ++i;
            character = 0x10000 + ((character & 0x3FF) << 10) + (units[i] & 0x3FFu);
        } else if (IsHighSurrogate(character) || IsLowSurrogate(character)) {
            character = Replacement;
        }
        AppendCharacter(text, character);
    }
}

}  // namespace orv
