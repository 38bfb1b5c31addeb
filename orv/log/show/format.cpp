#include "orv/log/show/format.h"

#include <cinttypes>
#include <cstdio>

#include "orv/address.h"

namespace orv::log {

namespace {

template <typename... Arguments>
std::string Print(const char* format, Arguments... arguments) {
    char text[64];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

}  // namespace

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
            words += ' ' + AddressText(subject.handle);
            break;
        case Traces::AddressAndNumber:
            words += ' ' + AddressText(subject.handle) + ' ' + std::to_string(subject.number);
            break;
    }
    return words;
}

}  // namespace orv::log
