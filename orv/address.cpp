#include "orv/address.h"

#include <charconv>
#include <cstdio>

#include "orv/problem.h"
#include "orv/terminal/printable.h"

namespace orv {

const char* const AddressForms =
    "as A0:B1:C2:D3:E4:F5, as A0B1C2D3E4F5, or as the log writes it, 176685338322165. 12 digits "
    "are always the second form; a decimal number of 12 digits gets a 0 in front";

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

// Six pairs with colons between them, as their 12 digits; anything else as it is.
std::string WithoutColons(std::string_view text) {
    std::string digits;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i % 3 != 2) {
            digits += text[i];
        } else if (text[i] != ':') {
            return std::string(text);
        }
    }
    return text.size() == 17 ? digits : std::string(text);
}

}  // namespace

std::optional<BluetoothAddress> FindAddress(std::string_view text) {
    const std::string digits = WithoutColons(text);
    const auto number = Number(digits, digits.size() == HexDigits ? 16 : 10);
    return number && *number != 0 && *number <= Largest ? number : std::nullopt;
}

BluetoothAddress AddressOf(std::string_view text) {
    const auto address = FindAddress(text);
    if (!address) {
        throw Problem(ExitStatus::BadUsage,
                      "\"" + Printable(text) + "\" is no address: write it " + AddressForms);
    }
    return *address;
}

std::string AddressText(BluetoothAddress address) {
    char text[19];  // the last colon and the zero after it, too
    char* at = text;
    for (int shift = 40; shift >= 0; shift -= 8) {
        at += snprintf(at, 4, "%02X:", static_cast<unsigned>(address >> shift & 0xFF));
    }
    return {text, 17};
}

}  // namespace orv
