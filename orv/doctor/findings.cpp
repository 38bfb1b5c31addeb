#include "orv/doctor/findings.h"

#include <algorithm>
#include <utility>

namespace orv::doctor {

const char* WordOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::NotTested:
            return "not tested";
        case Verdict::Confirmed:
            return "confirmed";
        case Verdict::Refuted:
            return "refuted";
    }
    return "";
}

void Findings::Confirm(Check check, std::string seen) {
    if (At(check).verdict != Verdict::Refuted) {
        At(check) = {Verdict::Confirmed, std::move(seen)};
    }
}

void Findings::Refute(Check check, std::string seen) {
    if (At(check).verdict != Verdict::Refuted) {
        At(check) = {Verdict::Refuted, std::move(seen)};
    }
}

void Findings::Skip(Check check, std::string why) {
    if (At(check).verdict == Verdict::NotTested) {
        At(check).seen = std::move(why);
    }
}

void Findings::Judge(Check check, bool isAsAssumed, std::string seen) {
    isAsAssumed ? Confirm(check, std::move(seen)) : Refute(check, std::move(seen));
}

std::size_t Findings::Count(Verdict verdict) const {
    return static_cast<std::size_t>(
        std::count_if(findings.begin(), findings.end(),
                      [&](const Finding& each) { return each.verdict == verdict; }));
}

}  // namespace orv::doctor
