// Records a scan or a conversation as a scenario for the simulated world.
//
// A host polls only the latest record and the received bytes of each device. So a recording lacks
// packets that changed nothing or arrived between two polls, devices without an ORV name, sent
// bytes, and the boundaries of notifications.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orv/output_file.h"
#include "quelvixwinlib.h"

namespace orv {

// A scenario file that is written event by event, up to the limits of a playable scenario.
class RecordingFile {
  public:
    // Records nothing if `name` is empty. Throws a Problem if the file cannot be created.
    explicit RecordingFile(const std::string& name);
    ~RecordingFile();
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;

    bool IsOpen() const { return file != nullptr; }
    void Begin(const char* title, const char* about);
    // Adds an event at `at` ms that contains `values` JSON values. Ignores the event if the file
    // has reached a limit.
    void Add(const std::string& event, std::size_t values, std::int64_t at);
    void Flush();
    // Adds the devices and gives the file its final name. Throws a Problem if a limit was reached.
    void End(const std::vector<BluetoothAddress>& devices);

  private:
    std::string name;
    std::unique_ptr<OutputFile> file;
    std::size_t bytesWritten = 0;
    std::size_t valuesWritten = 0;
    std::optional<std::int64_t> fullAt;
};

class RecordingClock {
  public:
    std::int64_t Now() const;

  private:
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
};

// ScanRecording and TalkRecording complete the file in their destructors, even after a failure.
class ScanRecording {
  public:
    explicit ScanRecording(RecordingFile& recordingFile);
    ~ScanRecording();
    ScanRecording(const ScanRecording&) = delete;
    ScanRecording& operator=(const ScanRecording&) = delete;

    // Records the changes of the listed devices, whose indices must not change.
    void Add(const std::vector<DiscoveredDevice>& devices);
    void End();

  private:
    enum class Content : std::uint8_t { FamilyName, Name, Values };
    void AddChange(const DiscoveredDevice* before, const DiscoveredDevice& now);
    void AddPacket(Content content, const DiscoveredDevice& device);

    RecordingFile& file;
    RecordingClock clock;
    std::vector<DiscoveredDevice> known;
};

class TalkRecording {
  public:
    TalkRecording(RecordingFile& recordingFile, BluetoothAddress device);
    ~TalkRecording();
    TalkRecording(const TalkRecording&) = delete;
    TalkRecording& operator=(const TalkRecording&) = delete;

    void Add(std::string_view received);
    void End();

  private:
    RecordingFile& file;
    RecordingClock clock;
    BluetoothAddress address;
};

}  // namespace orv
