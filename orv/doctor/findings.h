#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "orv/doctor/checks.h"

namespace orv::doctor {

enum class Verdict : std::uint8_t { NotTested, Confirmed, Refuted };
const char* WordOf(Verdict verdict);

struct Finding {
    Verdict verdict = Verdict::NotTested;
    std::string seen;  // what was seen, or why the check was skipped
};

// Holds one finding per check. Later results do not change a refutation.
class Findings {
  public:
    void Confirm(Check check, std::string seen);
    void Refute(Check check, std::string seen);
    // Does nothing if the check has a result.
    void Skip(Check check, std::string why);
    void Judge(Check check, bool isAsAssumed, std::string seen);

    const Finding& Of(Check check) const { return findings[static_cast<std::size_t>(check)]; }
    std::size_t Count(Verdict verdict) const;

  private:
    Finding& At(Check check) { return findings[static_cast<std::size_t>(check)]; }

    std::array<Finding, CheckCount> findings;
};

}  // namespace orv::doctor
