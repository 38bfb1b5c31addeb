#include "orv/recording/recording.h"

#include <cstring>
#include <fstream>

#include "orv/address.h"
#include "orv/library/library.h"
#include "orv/problem.h"
#include "orv/scan/device_text.h"
#include "orv/terminal/printable.h"

namespace orv {

namespace {

constexpr std::size_t LargestNotification = 244;
constexpr int ServiceData = 22;  // the kind of section that carries the values
constexpr std::string_view FamilyPrefix = "ORV";

// A name whose last character was cut is completed by any character with the same beginning: the
// library cuts it again at the same byte.
std::string WholeName(std::string_view name) {
    std::string whole(name);
    for (std::size_t left = UnfinishedBytes(whole) > 0 ? 3 : 0; left > 0; --left) {
        // The lowest continuation is none for these two beginnings.
        const auto last = static_cast<unsigned char>(whole.back());
        whole += last == 0xE0 || last == 0xF0 ? '\xA0' : '\x80';
        if (UnfinishedBytes(whole) == 0) {
            break;
        }
    }
    return whole;
}

Json Section(std::string_view key, std::string_view value) {
    return {{"type", ServiceData}, {"data", HexText(key) + HexText(value)}};
}

std::string_view BytesOf(const std::uint8_t* value, std::size_t length) {
    return {reinterpret_cast<const char*>(value), length};
}

// The values of a device as its scan response carries them, keys with the lower byte first.
Json Sections(const DiscoveredDevice& device) {
    Json sections = Json::array();
    if (device.value0500 != 0xFF) {
        sections.push_back(Section({"\x00\x05", 2}, BytesOf(&device.value0500, 1)));
    }
    if (device.value1130 != 0xFF) {
        sections.push_back(Section("\x30\x11", BytesOf(&device.value1130, 1)));
    }
    sections.push_back(Section("\x18\x11", BytesOf(device.data1118, sizeof device.data1118)));
    return sections;
}

bool HaveSameValues(const DiscoveredDevice& one, const DiscoveredDevice& other) {
    return one.value0500 == other.value0500 && one.value1130 == other.value1130 &&
           std::memcmp(one.data1118, other.data1118, sizeof one.data1118) == 0;
}

bool HaveSameNames(const DiscoveredDevice& one, const DiscoveredDevice& other) {
    return std::memcmp(one.name, other.name, sizeof one.name) == 0;
}

Json NewScenario(const char* title, const char* about, Json devices, const Json& events) {
    return {
        {"title", title}, {"about", about}, {"devices", std::move(devices)}, {"events", events}};
}

}  // namespace

RecordingFile::RecordingFile(const std::string& fileName) : name(fileName) {
    if (!std::ofstream(PathOf(name), std::ios::app)) {
        throw Problem(ExitStatus::FileFailed,
                      "the recording " + Printable(name) +
                          " cannot be written: is there such a folder, and may you write there?");
    }
}

void RecordingFile::Write(const Json& scenario) const {
    std::ofstream file(PathOf(name), std::ios::binary);
    file << scenario.dump(2, ' ', true, Json::error_handler_t::replace) << '\n';
    if (!file.flush()) {
        throw Problem(ExitStatus::FileFailed,
                      "the recording " + Printable(name) + " was not written as a whole");
    }
}

std::int64_t RecordingClock::Now() const {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now() - begin).count();
}

void ScanRecording::AddChange(const DiscoveredDevice* before, const DiscoveredDevice& now) {
    const auto add = [&](const char* packet, const char* field, Json content) {
        Json event = {{"at", clock.Now()},
                      {"device", AddressText(now.address)},
                      {"advertise", packet},
                      {"signal", now.rssi}};
        event[field] = std::move(content);
        events.push_back(std::move(event));
    };
    const std::string_view name = NameOf(now);
    if (!before && name.substr(0, FamilyPrefix.size()) != FamilyPrefix) {
        // It has changed its name since it was listed, which takes this beginning.
        add("Advertisement", "name", FamilyPrefix);
    }
    const bool hasValues = before ? !HaveSameValues(*before, now)
                                  : !ValueText(now.value0500).empty() ||
                                        !ValueText(now.value1130).empty() || !DataText(now).empty();
    const bool hasName = !before || !HaveSameNames(*before, now);
    // A packet that brought a new signal and nothing else was most likely an advertisement.
    if (hasName || !hasValues) {
        add("Advertisement", "name", name.empty() ? Json(nullptr) : Json(WholeName(name)));
    }
    if (hasValues) {
        add("ScanResponse", "sections", Sections(now));
    }
}

void ScanRecording::Add(const std::vector<DiscoveredDevice>& devices) {
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const DiscoveredDevice* before = i < known.size() ? &known[i] : nullptr;
        if (!before || std::memcmp(before, &devices[i], sizeof devices[i]) != 0) {
            AddChange(before, devices[i]);
        }
    }
    known = devices;
}

Json ScanRecording::Scenario() const {
    Json devices = Json::array();
    for (const DiscoveredDevice& device : known) {
        devices.push_back({{"address", AddressText(device.address)}});
    }
    return NewScenario("A recorded scan",
                       "What orv scan heard: each change of a listed device that it saw.",
                       std::move(devices), events);
}

void TalkRecording::Add(std::string_view received) {
    for (; !received.empty();
         received.remove_prefix(std::min(received.size(), LargestNotification))) {
        events.push_back({{"after", clock.Now()},
                          {"device", AddressText(address)},
                          {"notify", HexText(received.substr(0, LargestNotification))}});
    }
}

Json TalkRecording::Scenario() const {
    return NewScenario(
        "A recorded conversation",
        "What a device sent during orv talk, at the same times after its link opens.",
        Json::array({{{"address", AddressText(address)}}}), events);
}

}  // namespace orv
