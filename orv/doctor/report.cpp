#include "orv/doctor/report.h"

#include <nlohmann/json.hpp>

#include "orv/address.h"
#include "orv/doctor/system.h"
#include "orv/terminal/printable.h"

namespace orv::doctor {

namespace {

using Json = nlohmann::ordered_json;

constexpr int Indent = 2;
constexpr std::size_t VerdictColumns = 12;

std::string DeviceText(const Examination& run) {
    return !run.device ? "none" : run.isAnonymous ? "omitted" : AddressText(*run.device);
}

std::string SummaryOf(const Findings& findings) {
    std::string text;
    for (const Verdict verdict : {Verdict::Confirmed, Verdict::Refuted, Verdict::NotTested}) {
        text += (text.empty() ? "" : ", ") + std::to_string(findings.Count(verdict)) + ' ' +
                WordOf(verdict);
    }
    return text;
}

std::string Paragraph(const char* label, const std::string& text) {
    return std::string(VerdictColumns, ' ') + label + Printable(text) + '\n';
}

}  // namespace

std::string TextReport(const Examination& run) {
    std::string text = "orv doctor, " + system::Name() + ", device: " + DeviceText(run) + "\n\n";
    for (const CheckFacts& facts : AllChecks()) {
        const Finding& finding = run.findings.Of(facts.check);
        const bool isTested = finding.verdict != Verdict::NotTested;
        text += Fitted(WordOf(finding.verdict), VerdictColumns) + facts.title + " (" + facts.id +
                ")\n" + Paragraph("assumed  ", facts.assumed) +
                Paragraph(isTested ? "seen     " : "because  ", finding.seen) +
                Paragraph("see      ", facts.section);
    }
    text += "\nWhat no check can show:\n";
    for (const Unchecked& each : AllUnchecked()) {
        text += Paragraph("assumed  ", each.assumed) + Paragraph("because  ", each.reason) +
                Paragraph("see      ", each.section);
    }
    return text + '\n' + SummaryOf(run.findings) + '\n';
}

std::string JsonReport(const Examination& run) {
    Json checks = Json::array();
    for (const CheckFacts& facts : AllChecks()) {
        const Finding& finding = run.findings.Of(facts.check);
        checks.push_back(
            {{"id", facts.id},
             {"title", facts.title},
             {"assumed", facts.assumed},
             {"verdict", WordOf(finding.verdict)},
             {finding.verdict == Verdict::NotTested ? "because" : "seen", Printable(finding.seen)},
             {"section", facts.section}});
    }
    Json unchecked = Json::array();
    for (const Unchecked& each : AllUnchecked()) {
        unchecked.push_back(
            {{"assumed", each.assumed}, {"because", each.reason}, {"section", each.section}});
    }
    const Json report = {{"report", "orv doctor"},
                         {"system", system::Name()},
                         {"simulated", run.library.IsSimulated()},
                         {"device", DeviceText(run)},
                         {"summary", SummaryOf(run.findings)},
                         {"checks", checks},
                         {"notChecked", unchecked},
                         {"text", TextReport(run)}};
    return report.dump(Indent, ' ', true, Json::error_handler_t::replace) + '\n';
}

}  // namespace orv::doctor
