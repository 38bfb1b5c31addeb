#include "orv/log/show/json.h"

#include <map>
#include <nlohmann/json.hpp>
#include <tuple>

#include "orv/address.h"
#include "orv/log/infer/causes.h"
#include "orv/log/show/cause_texts.h"
#include "orv/log/show/format.h"

namespace orv::log {

namespace {

using Json = nlohmann::ordered_json;

// Writes only ASCII, because other characters from a log can reverse the text in a terminal.
std::string Dump(const Json& json) {
    return json.dump(-1, ' ', /*ensure_ascii=*/true, Json::error_handler_t::replace);
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

Json SuspectJson(Function function, const Suspect& suspect) {
    const CauseTexts& texts = TextsOf(suspect.cause);
    Json json{{"id", texts.id}, {"what", texts.what}};
    for (int step = 0; step < 8; ++step) {
        if (suspect.steps >> step & 1) {
            json["while"].push_back(StepName(function, step));
        }
    }
    json["sign"] = texts.tell;
    json["do"] = texts.advice;
    return json;
}

// Caches the JSON of causes, because few different ones occur.
class SuspectTexts {
  public:
    const std::string& Of(Function function, const Suspect& suspect) {
        std::string& text = texts[{function, suspect.cause, suspect.steps}];
        if (text.empty()) {
            text = Dump(SuspectJson(function, suspect));
        }
        return text;
    }

  private:
    std::map<std::tuple<Function, Cause, Steps>, std::string> texts;
};

void AddSubject(Json& json, const Subject& subject) {
    const FunctionFacts& facts = FactsOf(subject.function);
    json["function"] = facts.name;
    if (facts.family == Family::Link) {
        json["address"] = AddressText(subject.handle);
    } else if (facts.traces != Traces::Nothing) {
        json["scannerId"] = subject.ScannerId();
    }
    if (facts.traces == Traces::ScannerAndNumber) {
        json["index"] = subject.number;
    } else if (facts.traces == Traces::AddressAndNumber) {
        json["length"] = subject.number;
    }
}

std::string CallText(const Call& call, SuspectTexts& suspectTexts) {
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
    std::string text = Dump(json);
    text.pop_back();  // removes the closing brace, because members follow
    text += call.result ? ",\"causes\":[" : ",\"causesIfFailed\":[";
    const char* separator = "";
    for (const Suspect& suspect : Explain(call)) {
        text += separator + suspectTexts.Of(call.subject.function, suspect);
        separator = ",";
    }
    return text + "]}";
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

class ListWriter {
  public:
    ListWriter(std::FILE* to, const char* name) : file(to) {
        std::fprintf(file, ",\"%s\":[", name);
    }
    void Add(const std::string& text) {
        std::fputs(separator, file);
        std::fwrite(text.data(), 1, text.size(), file);
        separator = ",\n";
    }
    void End() { std::fputc(']', file); }

  private:
    std::FILE* file;
    const char* separator = "\n";
};

}  // namespace

void WriteJson(std::FILE* file, LogFile& log, Threads threads) {
    const Overview overview = Survey(log, threads);
    const Json head{{"file", log.Name()},
                    {"lines", overview.totals.lines},
                    {"first", StampWords(overview.totals.firstStamp)},
                    {"last", StampWords(overview.totals.lastStamp)},
                    {"hasResults", overview.results.any()},
                    {"threads", threads == Threads::One ? "one" : "many"}};
    std::string text = Dump(head);
    text.pop_back();
    std::fputs(text.c_str(), file);
    ListWriter calls(file, "calls");
    SuspectTexts suspectTexts;
    ForEachCall(log, overview, [&](const Call& call) { calls.Add(CallText(call, suspectTexts)); });
    calls.End();
    ListWriter notes(file, "notes");
    for (const Note& note : overview.notes) {
        notes.Add(Dump(NoteJson(note)));
    }
    notes.End();
    std::fputs("}\n", file);
}

}  // namespace orv::log
