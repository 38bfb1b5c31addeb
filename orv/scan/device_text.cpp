#include "orv/scan/device_text.h"

#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>

#include "orv/address.h"
#include "orv/terminal/printable.h"

namespace orv {

namespace {

constexpr std::uint8_t Unset = 0xFF;

// Signs that begin a formula in a spreadsheet, with their Unicode variants.
constexpr std::u32string_view FormulaSigns = U"=+-@|%＝＋－＠｜％﹦﹢﹣﹫﹪⁼⁺⁻₌₊₋−";

// Writes a field of a CSV line. A spreadsheet may split it at any character that is not a letter or
// digit, even in quotes. So an apostrophe precedes each sign that could begin a formula after a
// split.
std::string CsvText(std::string_view text) {
    const std::string shown = Printable(text);
    std::string field = "\"";
    bool isInWord = false;
    for (std::string_view rest = shown; !rest.empty();) {
        const Character next = FirstCharacter(rest);
        if (!isInWord && FormulaSigns.find(next.code) != FormulaSigns.npos) {
            field += '\'';
        }
        field += next.code == U'"' ? "\"\"" : rest.substr(0, next.bytes);
        isInWord = next.code < 0x80 && std::isalnum(static_cast<int>(next.code)) != 0;
        rest.remove_prefix(next.bytes);
    }
    return field + '"';
}

std::string CsvValue(std::uint8_t value) {
    return value == Unset ? "" : std::to_string(value);
}

}  // namespace

std::string_view NameOf(const DiscoveredDevice& device) {
    const auto* end = std::find(std::begin(device.name), std::end(device.name), '\0');
    return {device.name, static_cast<std::size_t>(end - device.name)};
}

std::string HexText(std::string_view bytes) {
    static constexpr char Digits[] = "0123456789ABCDEF";
    std::string text;
    for (const char byte : bytes) {
        text += Digits[static_cast<unsigned char>(byte) >> 4];
        text += Digits[static_cast<unsigned char>(byte) & 0x0F];
    }
    return text;
}

std::string ValueText(std::uint8_t value) {
    return value == Unset ? "" : HexText({reinterpret_cast<const char*>(&value), 1});
}

std::string DataText(const DiscoveredDevice& device) {
    std::size_t length = sizeof device.data1118;
    while (length > 0 && device.data1118[length - 1] == 0) {
        --length;
    }
    return HexText({reinterpret_cast<const char*>(device.data1118), length});
}

std::string JsonOf(const std::vector<DiscoveredDevice>& devices) {
    using Json = nlohmann::ordered_json;
    const auto valueOf = [](std::uint8_t value) {
        return value == Unset ? Json(nullptr) : Json(value);
    };
    Json list = Json::array();
    for (const DiscoveredDevice& device : devices) {
        list.push_back({{"address", AddressText(device.address)},
                        {"name", NameOf(device)},
                        {"rssi", device.rssi},
                        {"value0500", valueOf(device.value0500)},
                        {"value1130", valueOf(device.value1130)},
                        {"data1118", DataText(device)}});
    }
    return list.dump(2, ' ', true, Json::error_handler_t::replace) + "\n";
}

std::string CsvOf(const std::vector<DiscoveredDevice>& devices) {
    std::string text = "address,name,rssi,value0500,value1130,data1118\r\n";
    for (const DiscoveredDevice& device : devices) {
        text += AddressText(device.address) + ',' + CsvText(NameOf(device)) + ',' +
                std::to_string(device.rssi) + ',' + CsvValue(device.value0500) + ',' +
                CsvValue(device.value1130) + ',' + DataText(device) + "\r\n";
    }
    return text;
}

}  // namespace orv
