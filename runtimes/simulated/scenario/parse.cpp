#include "runtimes/simulated/scenario/parse.h"

#include <cstring>

namespace orv::simulated {

namespace {

constexpr std::size_t UuidLength = 36;
constexpr int AddressBytes = 6;

int DigitOf(char c) {
    const char* const digits = "0123456789abcdef";
    const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
    const char* const found = c == '\0' ? nullptr : std::strchr(digits, lower);
    return found == nullptr ? -1 : static_cast<int>(found - digits);
}

}  // namespace

std::optional<GUID> ParseUuid(const std::string& text) {
    if (text.size() != UuidLength) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < UuidLength; ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? text[i] != '-' : DigitOf(text[i]) < 0) {
            return std::nullopt;
        }
    }
    char copy[UuidLength + 1];
    std::memcpy(copy, text.c_str(), sizeof(copy));
    return Guid(copy);
}

std::optional<std::vector<BYTE>> ParseBytes(const std::string& text) {
    std::vector<BYTE> bytes;
    if (text.size() % 2 != 0) {
        return std::nullopt;
    }
    for (std::size_t at = 0; at < text.size(); at += 2) {
        const int high = DigitOf(text[at]);
        const int low = DigitOf(text[at + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<BYTE>(high << 4 | low));
    }
    return bytes;
}

std::optional<UINT64> ParseAddress(const std::string& text) {
    if (text.size() != 3 * AddressBytes - 1) {
        return std::nullopt;
    }
    UINT64 address = 0;
    for (int i = 0; i < AddressBytes; ++i) {
        const std::size_t at = static_cast<std::size_t>(i) * 3;
        const auto byte = ParseBytes(text.substr(at, 2));
        if (!byte || (i > 0 && text[at - 1] != ':')) {
            return std::nullopt;
        }
        address = address << 8 | byte->front();
    }
    return address;
}

std::optional<HRESULT> ParseCode(const std::string& text) {
    if (text.size() != 10 || text.compare(0, 2, "0x") != 0) {
        return std::nullopt;
    }
    const auto bytes = ParseBytes(text.substr(2));
    if (!bytes) {
        return std::nullopt;
    }
    UINT32 code = 0;
    for (const BYTE byte : *bytes) {
        code = code << 8 | byte;
    }
    return static_cast<HRESULT>(code);
}

}  // namespace orv::simulated
