#include "orv/scan/device_text.h"

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>

#include "orv/address.h"
#include "orv/terminal/printable.h"

namespace orv {

namespace {

constexpr std::uint8_t Unset = 0xFF;

// A field of a CSV line, which stays one line and one field. What a spreadsheet shows is all that
// has to be kept: a formula begins with one of these signs.
std::string CsvText(std::string_view text) {
    std::string shown = Printable(text);
    const std::size_t first = shown.find_first_not_of(' ');
    if (first != std::string::npos && std::strchr("=+-@|%", shown[first])) {
        shown.insert(0, 1, '\'');
    }
    std::string field = "\"";
    for (const char letter : shown) {
        field += letter == '"' ? "\"\"" : std::string(1, letter);
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
