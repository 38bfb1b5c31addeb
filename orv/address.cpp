#include "orv/address.h"

#include <charconv>
#include <cstdio>

namespace orv {

namespace {

constexpr BluetoothAddress Largest = 0xFFFFFFFFFFFF;
constexpr std::size_t HexDigits = 12;

std::optional<BluetoothAddress> Number(std::string_view text, int base) {
    BluetoothAddress number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

// Removes the separators of an address such as A0-B1-C2-D3-E4-F5. Returns other texts unchanged.
std::string WithoutSeparators(std::string_view text) {
    std::string digits;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i % 3 != 2) {
            digits += text[i];
        } else if ((text[i] != ':' && text[i] != '-') || text[i] != text[2]) {
            return std::string(text);
        }
    }
    return text.size() == 17 ? digits : std::string(text);
}

}  // namespace

std::optional<BluetoothAddress> FindAddress(std::string_view text) {
    const bool isHex = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
    const std::string digits = isHex ? std::string(text.substr(2)) : WithoutSeparators(text);
    const auto number = Number(digits, isHex || digits.size() == HexDigits ? 16 : 10);
    return number && *number != 0 && *number <= Largest ? number : std::nullopt;
}

std::string AddressText(BluetoothAddress address) {
    if (address > Largest) {
        return std::to_string(address);
    }
    char text[19];  // 17 characters, a trailing colon and the terminating zero
    char* at = text;
    for (int shift = 40; shift >= 0; shift -= 8) {
        at += snprintf(at, 4, "%02X:", static_cast<unsigned>(address >> shift & 0xFF));
    }
    return {text, 17};
}

}  // namespace orv
