// Converts a name from UTF-8. The bus has checked that the text is valid.
#pragma once

#include <string>
#include <string_view>

namespace orv::bluez {

inline std::u16string Utf16(std::string_view text) {
    std::u16string result;
    for (std::size_t at = 0; at < text.size();) {
        const auto first = static_cast<unsigned char>(text[at++]);
        const int more = first < 0xC0 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
        char32_t code = more == 0 ? first : first & (0x3Fu >> more);
        for (int i = 0; i < more && at < text.size(); ++i) {
            code = code << 6 | (static_cast<unsigned char>(text[at++]) & 0x3Fu);
        }
        if (code > 0xFFFF) {
            code -= 0x10000;
            result.push_back(static_cast<char16_t>(0xD800 + (code >> 10)));
            code = 0xDC00 + (code & 0x3FF);
        }
        result.push_back(static_cast<char16_t>(code));
    }
    return result;
}

}  // namespace orv::bluez
