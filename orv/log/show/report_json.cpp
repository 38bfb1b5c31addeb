#include "orv/log/show/report_json.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "orv/address.h"
#include "orv/log/show/cause_texts.h"
#include "orv/log/show/format.h"
#include "orv/log/show/report_bins.h"
#include "orv/terminal/printable.h"

namespace orv::log {

namespace {

using Json = nlohmann::ordered_json;

// Maximum numbers of items on the report page.
constexpr std::size_t MostSpans = 1500;  // per row of the timeline
constexpr std::size_t MostBins = 1000;
constexpr std::size_t MostSignals = 10;
constexpr std::size_t MostDevices = 200;
constexpr std::size_t MostFailures = 200;
constexpr std::size_t MostNotes = 8;  // for each kind of note

constexpr std::size_t MostRates = 300;       // bins of the data rate; more would show only spikes
constexpr std::int64_t NarrowestRate = 200;  // minimum width of a bin in ms

std::string ScriptText(const Json& json) {
    std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    for (std::size_t place = text.find('<'); place != text.npos; place = text.find('<', place)) {
        text.replace(place, 1, "\\u003c");
    }
    return text;
}

// Returns the `most` items with the largest `weight`, and the number of the others.
template <typename Items, typename Weight>
std::pair<std::vector<typename Items::const_pointer>, std::size_t> Top(const Items& items,
                                                                       std::size_t most,
                                                                       Weight weight) {
    std::vector<typename Items::const_pointer> top;
    top.reserve(items.size());
    for (const auto& item : items) {
        top.push_back(&item);
    }
    std::stable_sort(top.begin(), top.end(),
                     [&](auto* one, auto* other) { return weight(*one) > weight(*other); });
    const std::size_t kept = std::min(top.size(), most);
    const std::size_t left = top.size() - kept;
    top.resize(kept);
    return {top, left};
}

Json SpanLane(const char* name, const Bins& bins, const std::vector<Span>& spans) {
    Json lane{{"name", name}, {"count", spans.size()}, {"spans", Json::array()}};
    for (const Span& span : Weightiest(spans, MostSpans)) {
        lane["spans"].push_back({span.time - bins.start, span.length, static_cast<int>(span.state),
                                 CallWords(span.subject)});
    }
    if (spans.size() > MostSpans) {
        lane["density"] = CountPerBin(bins, spans);
        lane["failed"] = CountPerBin(bins, spans, Span::State::Failed);
        lane["unknown"] = CountPerBin(bins, spans, Span::State::Unknown);
    }
    return lane;
}

Json EventLane(const char* name, const Bins& bins, const std::vector<Sample>& samples,
               bool isFailure) {
    std::vector<Sample> ones = samples;
    for (Sample& sample : ones) {
        sample.value = 1;
    }
    return {{"name", name},
            {"count", samples.size()},
            {"failure", isFailure},
            {"density", SumPerBin(bins, ones)}};
}

Json Lanes(const Bins& bins, const ReportCollector& collected) {
    return {SpanLane("Availability", bins, collected.calls[0]),
            SpanLane("Scanner", bins, collected.calls[1]),
            SpanLane("Device links", bins, collected.calls[2]),
            EventLane("Advertisements", bins, collected.advertisements, false),
            EventLane("Notifications", bins, collected.notifications, false),
            EventLane("Failure lines", bins, collected.failures, true)};
}

std::int64_t ActivityOf(const ReportedDevice& device) {
    return static_cast<std::int64_t>(device.signal.size()) + device.bytesReceived +
           device.bytesSent + 1000 * (device.connects + device.failedCalls);
}

Json Signals(const Bins& bins, const ReportCollector& collected) {
    Json signals = Json::array();
    const auto heard = [](const auto& device) { return device.second.signal.size(); };
    for (const auto* device : Top(collected.devices, MostSignals, heard).first) {
        if (device->second.signal.empty()) {
            continue;
        }
        Json values = Json::array();
        for (const std::optional<double>& mean : MeanPerBin(bins, device->second.signal)) {
            values.push_back(mean ? Json(*mean) : Json(nullptr));
        }
        signals.push_back({{"address", AddressText(device->first)},
                           {"name", Printable(device->second.name)},
                           {"values", std::move(values)}});
    }
    return signals;
}

Json DeviceJson(const ReportedDevice& device, std::int64_t start) {
    Json json{{"address", AddressText(device.address)},
              {"name", Printable(device.name)},
              {"advertisements", device.signal.size()}};
    if (!device.signal.empty()) {
        const auto less = [](const Sample& one, const Sample& other) {
            return one.value < other.value;
        };
        const auto [weakest, strongest] =
            std::minmax_element(device.signal.begin(), device.signal.end(), less);
        json["weakest"] = weakest->value;
        json["strongest"] = strongest->value;
    }
    json["connects"] = device.connects;
    json["failed"] = device.failedCalls;
    json["received"] = device.bytesReceived;
    json["sent"] = device.bytesSent;
    json["first"] = device.first - start;
    json["last"] = device.last - start;
    return json;
}

Json FailureJson(const FailureGroup& group, std::int64_t start) {
    Json json{{"call", CallWords(group.example.subject)},
              {"count", group.count},
              {"known", group.example.result.has_value()},
              {"duration", DurationWords(group.example.duration)},
              {"times", Json::array()},
              {"causes", Json::array()}};
    if (group.example.failures.count > 0) {
        json["line"] = Printable(group.example.failures.text);
    }
    for (const Sample& time : group.firstFew) {
        json["times"].push_back({time.time - start, StampWords(time.value)});
    }
    for (const Suspect& suspect : group.suspects) {
        const CauseTexts& texts = TextsOf(suspect.cause);
        json["causes"].push_back(
            {{"what", texts.what},
             {"while", StepWords(group.example.subject.function, suspect.steps)},
             {"sign", texts.tell},
             {"do", texts.advice}});
    }
    return json;
}

Json NotesJson(const std::vector<Note>& notes, std::int64_t start) {
    Json kinds = Json::array();
    for (int kind = 0; kind < NoteKindCount; ++kind) {
        Json items = Json::array();
        std::size_t count = 0;
        for (const Note& note : notes) {
            if (note.kind != static_cast<NoteKind>(kind) || count++ >= MostNotes) {
                continue;
            }
            Json item{{"what", FactsOf(note)}};
            if (note.line > 0) {
                item["time"] = {note.time - start, StampWords(note.stamp)};
            }
            items.push_back(std::move(item));
        }
        if (count > 0) {
            const NoteTexts& texts = TextsOf(static_cast<NoteKind>(kind));
            kinds.push_back({{"means", texts.means},
                             {"do", texts.advice},
                             {"more", count - items.size()},
                             {"items", std::move(items)}});
        }
    }
    return kinds;
}

}  // namespace

std::string ReportJson(const ReportHead& head, const ReportCollector& collected) {
    const Totals& totals = head.totals;
    const std::int64_t start = totals.firstTime;
    const Bins bins = Bins::Cover(start, totals.lastTime, MostBins, 1);
    const Bins rates = Bins::Cover(start, totals.lastTime, MostRates, NarrowestRate);
    Json json{{"file", Printable(head.name)},
              {"lines", totals.lines},
              {"firstStamp", totals.firstStamp},
              {"span", totals.lastTime - start},
              {"hasResults", head.hasResults},
              {"oneThread", head.threads == Threads::One},
              {"binMs", bins.width},
              {"lanes", Lanes(bins, collected)},
              {"signals", Signals(bins, collected)},
              {"rateMs", rates.width},
              {"received", SumPerBin(rates, collected.notifications)},
              {"sent", SumPerBin(rates, collected.sent)}};

    const auto [devices, moreDevices] = Top(collected.devices, MostDevices, [](const auto& device) {
        return ActivityOf(device.second);
    });
    json["devices"] = Json::array();
    for (const auto* device : devices) {
        json["devices"].push_back(DeviceJson(device->second, start));
    }
    json["moreDevices"] = moreDevices;

    const auto [failures, moreFailures] = Top(collected.failureGroups, MostFailures,
                                              [](const auto& group) { return group.second.count; });
    json["failures"] = Json::array();
    for (const auto* group : failures) {
        json["failures"].push_back(FailureJson(group->second, start));
    }
    json["moreFailures"] = moreFailures;

    json["notes"] = NotesJson(collected.notes, start);
    return ScriptText(json);
}

}  // namespace orv::log
