#include "orv/log/json_output.h"

#include <nlohmann/json.hpp>

#include "orv/log/explain.h"
#include "orv/log/words.h"

namespace orv::log {

namespace {

// Keeps the order in which fields are written.
using Json = nlohmann::ordered_json;

std::string Dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

const char* OwnerName(Owner owner) {
    switch (owner) {
        case Owner::ThisCall:
            return "call";
        case Owner::ThisOrCallback:
            return "callOrCallback";
        default:
            return "callOrOther";
    }
}

Json SuspectJson(const Call& call, const Suspect& suspect) {
    const CauseTexts& texts = TextsOf(suspect.cause);
    Json json{{"id", texts.id}, {"what", texts.what}};
    for (int step = 0; step < 8; ++step) {
        if (suspect.steps >> step & 1) {
            json["while"].push_back(StepName(call.subject.function, step));
        }
    }
    json["sign"] = texts.tell;
    json["do"] = texts.advice;
    return json;
}

void AddSubject(Json& json, const Subject& subject) {
    const FunctionFacts& facts = FactsOf(subject.function);
    json["function"] = facts.name;
    if (facts.family == Family::Link) {
        json["address"] = AddressWords(subject.handle);
    } else if (facts.traces != Traces::Nothing) {
        json["scannerId"] = subject.ScannerId();
    }
    if (facts.traces == Traces::ScannerAndNumber) {
        json["index"] = subject.number;
    } else if (facts.traces == Traces::AddressAndNumber) {
        json["length"] = subject.number;
    }
}

Json CallJson(const Call& call) {
    Json json{{"line", call.line}, {"time", StampWords(call.stamp)}};
    AddSubject(json, call.subject);
    json["result"] = call.result ? Json(*call.result) : Json(nullptr);
    json["resultFrom"] = call.resultLogged ? "resultLine" : call.result ? "conclusion" : "nothing";
    json["atLeastMs"] = call.duration.atLeast;
    json["atMostMs"] = call.duration.atMost ? Json(*call.duration.atMost) : Json(nullptr);
    if (call.failures.count > 0) {
        json["failureLines"] = {{"count", call.failures.count},
                                {"firstAfterMs", call.failures.first},
                                {"text", call.failures.text},
                                {"writtenBy", OwnerName(call.failures.owner)}};
    }
    Json& causes = json[call.result ? "causes" : "causesIfFailed"] = Json::array();
    for (const Suspect& suspect : Explain(call)) {
        causes.push_back(SuspectJson(call, suspect));
    }
    return json;
}

Json NoteJson(const Note& note) {
    const NoteTexts& texts = TextsOf(note.kind);
    Json json{{"id", texts.id}};
    if (note.line > 0) {
        json["line"] = note.line;
        json["time"] = StampWords(note.stamp);
    }
    json["what"] = FactsOf(note);
    json["means"] = texts.means;
    json["do"] = texts.advice;
    return json;
}

template <typename Items, typename ToJson>
void WriteList(std::FILE* file, const char* name, const Items& items, ToJson toJson) {
    std::fprintf(file, ",\"%s\":[", name);
    const char* separator = "\n";
    for (const auto& item : items) {
        std::fprintf(file, "%s%s", separator, Dump(toJson(item)).c_str());
        separator = ",\n";
    }
    std::fputc(']', file);
}

}  // namespace

void WriteJson(std::FILE* file, const std::string& name, const Findings& findings) {
    const Json head{{"file", name},
                    {"lines", findings.totals.lines},
                    {"first", StampWords(findings.totals.firstStamp)},
                    {"last", StampWords(findings.totals.lastStamp)},
                    {"hasResults", findings.hasResults},
                    {"threads", findings.threads == Threads::One ? "one" : "many"}};
    std::string text = Dump(head);
    text.pop_back();  // the object goes on
    std::fputs(text.c_str(), file);
    WriteList(file, "calls", findings.calls, CallJson);
    WriteList(file, "notes", findings.notes, NoteJson);
    std::fputs("}\n", file);
}

}  // namespace orv::log
