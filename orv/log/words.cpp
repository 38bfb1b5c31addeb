#include "orv/log/words.h"

#include <cinttypes>
#include <cstdio>

#include "orv/terminal/printable.h"

namespace orv::log {

namespace {

template <typename... Arguments>
std::string Print(const char* format, Arguments... arguments) {
    char text[64];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

}  // namespace

std::string AddressWords(std::uint64_t address) {
    if (address >> 48 != 0) {
        return std::to_string(address);
    }
    std::string words;
    for (int shift = 40; shift >= 0; shift -= 8) {
        words += Print("%02X", static_cast<unsigned>(address >> shift & 0xFF));
        words += shift > 0 ? ":" : "";
    }
    return words;
}

std::string StampWords(std::int64_t milliseconds) {
    const int day = static_cast<int>(milliseconds % 86400000);
    return Print("%02d:%02d:%02d.%03d", day / 3600000, day / 60000 % 60, day / 1000 % 60,
                 day % 1000);
}

std::string DurationWords(const Bounds& bounds) {
    if (bounds.Exact()) {
        return Print("%" PRId64 " ms", bounds.atLeast);
    }
    if (bounds.atMost) {
        return Print("up to %" PRId64 " ms", *bounds.atMost);
    }
    return bounds.atLeast > 0 ? Print("%" PRId64 " ms or more", bounds.atLeast) : "";
}

std::string CallWords(const Subject& subject) {
    const FunctionFacts& facts = FactsOf(subject.function);
    std::string words(facts.name);
    switch (facts.traces) {
        case Traces::Nothing:
            break;
        case Traces::Scanner:
            words += ' ' + std::to_string(subject.ScannerId());
            break;
        case Traces::ScannerAndNumber:
            words +=
                ' ' + std::to_string(subject.ScannerId()) + ' ' + std::to_string(subject.number);
            break;
        case Traces::Address:
            words += ' ' + AddressWords(subject.handle);
            break;
        case Traces::AddressAndNumber:
            words += ' ' + AddressWords(subject.handle) + ' ' + std::to_string(subject.number);
            break;
    }
    return words;
}

std::string Count(std::int64_t count, const char* noun) {
    return Counted(static_cast<std::uint64_t>(count), noun);
}

}  // namespace orv::log
