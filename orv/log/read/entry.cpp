#include "orv/log/read/entry.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <optional>

#include "orv/log/read/rows.h"

namespace orv::log {

namespace {

constexpr FunctionFacts Functions[] = {
    {Function::Available, "BluetoothAvailable", Family::Availability, Traces::Nothing, 2, false},
    {Function::Initialize, "OrvScanner_Initialize", Family::Scanner, Traces::Nothing, 0, false},
    {Function::Deinitialize, "OrvScanner_Deinitialize", Family::Scanner, Traces::Scanner, 0, false},
    {Function::Start, "OrvScanner_Start", Family::Scanner, Traces::Scanner, 0, true},
    {Function::Stop, "OrvScanner_Stop", Family::Scanner, Traces::Scanner, 0, true},
    {Function::GetDeviceCount, "OrvScanner_GetDeviceCount", Family::Scanner, Traces::Scanner, 0,
     false},
    {Function::GetDeviceInfo, "OrvScanner_GetDeviceInfo", Family::Scanner, Traces::ScannerAndNumber,
     0, false},
    {Function::Connect, "OrvDevice_Connect", Family::Link, Traces::Address, 5, false},
    {Function::Disconnect, "OrvDevice_Disconnect", Family::Link, Traces::Address, 1, true},
    {Function::Send, "OrvDevice_Send", Family::Link, Traces::AddressAndNumber, 1, true},
    {Function::Receive, "OrvDevice_Receive", Family::Link, Traces::Address, 0, false},
    {Function::Flush, "OrvDevice_Flush", Family::Link, Traces::Address, 0, false},
};
static_assert(std::size(Functions) == FunctionCount &&
              HasEachRow<&FunctionFacts::function>(Functions));

}  // namespace

const FunctionFacts& FactsOf(Function function) {
    return RowOf<&FunctionFacts::function>(Functions, function);
}

std::optional<Function> FindFunction(std::string_view name) {
    for (const FunctionFacts& facts : Functions) {
        if (facts.name == name) {
            return facts.function;
        }
    }
    return std::nullopt;
}

namespace {

constexpr std::string_view AdvertisementName = "OnAdvertisementReceived ";
constexpr std::string_view NotificationName = "OnDataReceived ";
constexpr std::string_view FailureName = "Exception: ";
constexpr std::string_view ResultName = "Returned ";

bool Take(std::string_view& text, std::string_view expected) {
    if (!text.starts_with(expected)) {
        return false;
    }
    text.remove_prefix(expected.size());
    return true;
}

// Removes a number from the start of `text`. Rejects leading zeros and -0, which the library never
// writes.
template <typename Number>
bool TakeNumber(std::string_view& text, Number& number) {
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    const auto length = static_cast<std::size_t>(end - text.data());
    if (problem != std::errc() || (length > 1 && text[0] == '0') || text.starts_with("-0")) {
        return false;
    }
    text.remove_prefix(length);
    return true;
}

bool TakeScanner(std::string_view& text, Subject& subject) {
    std::int32_t scannerId = 0;
    if (!Take(text, " ") || !TakeNumber(text, scannerId)) {
        return false;
    }
    subject.handle = static_cast<std::uint32_t>(scannerId);
    return true;
}

bool TakeAddress(std::string_view& text, Subject& subject) {
    return Take(text, " ") && TakeNumber(text, subject.handle);
}

bool TakeSecond(std::string_view& text, Subject& subject) {
    return Take(text, " ") && TakeNumber(text, subject.number);
}

std::optional<Subject> ReadCall(std::string_view text) {
    const std::string_view name = text.substr(0, text.find(' '));
    const std::optional<Function> function = FindFunction(name);
    if (!function) {
        return std::nullopt;
    }
    Subject subject{.function = *function};
    text.remove_prefix(name.size());
    const bool read = [&] {
        switch (FactsOf(*function).traces) {
            case Traces::Nothing:
                return true;
            case Traces::Scanner:
                return TakeScanner(text, subject);
            case Traces::ScannerAndNumber:
                return TakeScanner(text, subject) && TakeSecond(text, subject);
            case Traces::Address:
                return TakeAddress(text, subject);
            case Traces::AddressAndNumber:
                return TakeAddress(text, subject) && TakeSecond(text, subject);
        }
        return false;
    }();
    return read && text.empty() ? std::optional(subject) : std::nullopt;
}

bool ReadAdvertisement(std::string_view text, Entry& entry) {
    if (!Take(text, AdvertisementName) || !TakeNumber(text, entry.subject.handle) ||
        !Take(text, " <")) {
        return false;
    }
    // A name may contain "> ", so the last "> " ends it. A 16-bit number follows.
    constexpr std::size_t LongestEnd = std::string_view("> -32768").size();
    const std::size_t before = text.size() - std::min(text.size(), LongestEnd);
    std::size_t close = text.substr(before).rfind("> ");
    if (close == text.npos) {
        return false;
    }
    close += before;
    entry.words = text.substr(0, close);
    std::int16_t signal = 0;
    text.remove_prefix(close + 2);
    if (!TakeNumber(text, signal) || !text.empty()) {
        return false;
    }
    entry.kind = Kind::Advertisement;
    entry.number = signal;
    return true;
}

bool ReadNotification(std::string_view text, Entry& entry) {
    std::uint32_t length = 0;
    if (!Take(text, NotificationName) || !TakeNumber(text, entry.subject.handle) ||
        !Take(text, " ") || !TakeNumber(text, length) || !text.empty()) {
        return false;
    }
    entry.kind = Kind::Notification;
    entry.number = length;
    return true;
}

bool ReadResult(std::string_view text, Entry& entry) {
    std::int32_t result = 0;
    std::int32_t duration = 0;
    if (!Take(text, ResultName) || !TakeNumber(text, result) || result < -1 ||
        !Take(text, " after ") || !TakeNumber(text, duration) || duration < 0 ||
        !Take(text, " ms: ")) {
        return false;
    }
    const std::optional<Subject> subject = ReadCall(text);
    if (!subject) {
        return false;
    }
    entry.kind = Kind::Result;
    entry.subject = *subject;
    entry.number = result;
    entry.duration = duration;
    return true;
}

}  // namespace

Entry ReadEntry(std::string_view text) {
    Entry entry;
    if (const std::optional<Subject> call = ReadCall(text)) {
        entry.kind = Kind::Call;
        entry.subject = *call;
    } else if (text.starts_with(FailureName)) {
        entry.kind = Kind::Failure;
        entry.words = text.substr(FailureName.size());
    } else if (!ReadAdvertisement(text, entry) && !ReadNotification(text, entry) &&
               !ReadResult(text, entry)) {
        entry = {};
        entry.words = text;
    }
    return entry;
}

bool HasOpenName(std::string_view text) {
    std::uint64_t address = 0;
    std::string_view rest = text;
    Entry entry;
    return Take(rest, AdvertisementName) && TakeNumber(rest, address) && Take(rest, " <") &&
           !ReadAdvertisement(text, entry);
}

}  // namespace orv::log
