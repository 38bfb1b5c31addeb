#include "orv/recording/recording.h"

#include <cstring>
#include <nlohmann/json.hpp>

#include "orv/address.h"
#include "orv/library/library.h"
#include "orv/problem.h"
#include "orv/scan/device_text.h"
#include "orv/terminal/printable.h"

namespace orv {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t LargestNotification = 244;
constexpr int ServiceData = 22;  // section type of service data in an advertisement
// Limits of the recorded events. A playable scenario has at most 64 MiB and 2,000,000 JSON values,
// including its devices.
constexpr std::size_t MostBytes = std::size_t{60} << 20;
constexpr std::size_t MostValues = 1'900'000;
constexpr std::string_view FamilyPrefix = "ORV";

// If the name ends within a UTF-8 character, adds bytes that complete the character. Playback cuts
// the name again.
std::string WholeName(std::string_view name) {
    std::string whole(name);
    for (std::size_t left = UnfinishedBytes(whole) > 0 ? 3 : 0; left > 0; --left) {
        // After 0xE0 and 0xF0, 0x80 is not a valid second byte.
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

// Returns the values of a device as data sections of a scan response. The data of each section
// begins with the 16-bit key of the value, low byte first.
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

std::string Text(const Json& json) {
    return json.dump(-1, ' ', true, Json::error_handler_t::replace);
}

// Ignores failures, because a recording's destructor must not throw.
template <typename Recording>
void EndQuietly(Recording& recording) noexcept {
    try {
        recording.End();
    } catch (...) {
    }
}

}  // namespace

RecordingFile::RecordingFile(const std::string& fileName) : name(fileName) {
    if (!name.empty()) {
        file = std::make_unique<OutputFile>(name);
    }
}

RecordingFile::~RecordingFile() = default;

void RecordingFile::Begin(const char* title, const char* about) {
    if (file) {
        file->Write("{\"title\": " + Text(title) + ",\n\"about\": " + Text(about) +
                    ",\n\"events\": [");
    }
}

void RecordingFile::Add(const std::string& event, std::size_t values, std::int64_t at) {
    if (!file || fullAt) {
        return;
    }
    if (bytesWritten + event.size() > MostBytes || valuesWritten + values > MostValues) {
        fullAt = at;
        return;
    }
    file->Write((valuesWritten == 0 ? "\n" : ",\n") + event);
    bytesWritten += event.size();
    valuesWritten += values;
}

void RecordingFile::Flush() {
    if (file) {
        file->Flush();
    }
}

void RecordingFile::End(const std::vector<BluetoothAddress>& devices) {
    // Clears `file` first, so that the destructor does not end the recording again after a failure.
    const std::unique_ptr<OutputFile> ending = std::move(file);
    if (!ending) {
        return;
    }
    Json list = Json::array();
    for (const BluetoothAddress device : devices) {
        list.push_back({{"address", AddressText(device)}});
    }
    ending->Write("\n],\n\"devices\": " + Text(list) + "}\n");
    ending->Commit();
    if (fullAt) {
        throw Problem(ExitStatus::FileFailed, "the recording " + name + " ends after " +
                                                  std::to_string(*fullAt / 1000) +
                                                  " s: it has the largest size that can be played");
    }
}

std::int64_t RecordingClock::Now() const {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now() - begin).count();
}

ScanRecording::ScanRecording(RecordingFile& recordingFile) : file(recordingFile) {
    file.Begin("A recorded scan",
               "What orv scan heard: each change of a listed device that it saw.");
}

ScanRecording::~ScanRecording() {
    EndQuietly(*this);
}

void ScanRecording::AddPacket(Content content, const DiscoveredDevice& device) {
    const bool isResponse = content == Content::Values;
    const std::int64_t at = clock.Now();
    Json event = {{"at", at},
                  {"device", AddressText(device.address)},
                  {"advertise", isResponse ? "ScanResponse" : "Advertisement"},
                  {"signal", device.rssi}};
    std::size_t values = 6;
    if (isResponse) {
        event["sections"] = Sections(device);
        values += 3 * event["sections"].size();
    } else if (content == Content::FamilyName) {
        event["name"] = FamilyPrefix;
    } else {
        const std::string_view name = NameOf(device);
        event["name"] = name.empty() ? Json(nullptr) : Json(WholeName(name));
    }
    file.Add(Text(event), values, at);
}

void ScanRecording::AddChange(const DiscoveredDevice* before, const DiscoveredDevice& now) {
    const std::string_view name = NameOf(now);
    if (!before && name.substr(0, FamilyPrefix.size()) != FamilyPrefix) {
        // The library lists only devices that advertised an ORV name, so this device sent one
        // earlier.
        AddPacket(Content::FamilyName, now);
    }
    const bool hasValues = before ? !HaveSameValues(*before, now)
                                  : !ValueText(now.value0500).empty() ||
                                        !ValueText(now.value1130).empty() || !DataText(now).empty();
    const bool hasName = !before || !HaveSameNames(*before, now);
    // A packet that changed only the signal was most likely an advertisement, not a scan response.
    if (hasName || !hasValues) {
        AddPacket(Content::Name, now);
    }
    if (hasValues) {
        AddPacket(Content::Values, now);
    }
}

void ScanRecording::Add(const std::vector<DiscoveredDevice>& devices) {
    if (!file.IsOpen()) {
        return;
    }
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const DiscoveredDevice* before = i < known.size() ? &known[i] : nullptr;
        if (!before || std::memcmp(before, &devices[i], sizeof devices[i]) != 0) {
            AddChange(before, devices[i]);
        }
    }
    known = devices;
    file.Flush();
}

void ScanRecording::End() {
    std::vector<BluetoothAddress> addresses;
    for (const DiscoveredDevice& device : known) {
        addresses.push_back(device.address);
    }
    file.End(addresses);
}

TalkRecording::TalkRecording(RecordingFile& recordingFile, BluetoothAddress device)
    : file(recordingFile), address(device) {
    file.Begin("A recorded conversation",
               "What a device sent during orv talk, at the same times after its link opens.");
}

TalkRecording::~TalkRecording() {
    EndQuietly(*this);
}

void TalkRecording::Add(std::string_view received) {
    for (; file.IsOpen() && !received.empty();
         received.remove_prefix(std::min(received.size(), LargestNotification))) {
        const std::int64_t after = clock.Now();
        const Json event = {{"after", after},
                            {"device", AddressText(address)},
                            {"notify", HexText(received.substr(0, LargestNotification))}};
        file.Add(Text(event), 4, after);
    }
    file.Flush();
}

void TalkRecording::End() {
    file.End({address});
}

}  // namespace orv
