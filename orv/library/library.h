// The library as it was found when the program started: its functions, and what its file says.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "orv/library/module.h"
#include "quelvixwinlib.h"
#include "quelvixwinlib_simulated.h"

namespace orv {

// Paths are UTF-8 inside this program, on every system.
std::filesystem::path PathOf(std::string_view text);
std::string TextOf(const std::filesystem::path& path);

// Every function returns what the library's own function of that name returns. While the log is
// on, each call also adds a line with its result and how long it took.
class Library {
  public:
    // Throws a Problem when the file is no library or lacks a function.
    explicit Library(const std::filesystem::path& file);

    const std::filesystem::path& File() const { return file; }
    std::string Version() const;
    bool IsSimulated() const { return isSimulated; }

    // On real time. Throws a Problem, and then nothing has changed.
    void PlayScenario(const std::filesystem::path& scenario) const;

    // Empties the log and switches it on. Throws a Problem when it cannot be written.
    void EnableLog();
    std::filesystem::path LogFile() const;

    ResultCode BluetoothAvailable();
    ResultCode InitializeScanner();
    ResultCode DeinitializeScanner(std::int32_t scanner);
    ResultCode StartScanner(std::int32_t scanner);
    ResultCode StopScanner(std::int32_t scanner);
    ResultCode GetDeviceCount(std::int32_t scanner);
    ResultCode GetDeviceInfo(std::int32_t scanner, std::int32_t index, DiscoveredDevice& device);
    ResultCode Connect(BluetoothAddress address);
    ResultCode Disconnect(BluetoothAddress address);
    ResultCode Send(BluetoothAddress address, std::string_view block);
    // At most `most` bytes; `bytes` holds what was taken.
    ResultCode Receive(BluetoothAddress address, std::size_t most, std::string& bytes);
    ResultCode Flush(BluetoothAddress address);

  private:
    template <typename Function>
    void Load(Function*& function, const char* name, bool required = true);
    template <typename Body>
    ResultCode Call(const char* name, std::initializer_list<std::uint64_t> traced, Body&& body);

    module::Handle handle = nullptr;
    std::filesystem::path file;
    bool isSimulated = false;
    bool logging = false;

    decltype(&::BluetoothAvailable) bluetoothAvailable = nullptr;
    decltype(&OrvScanner_Initialize) initialize = nullptr;
    decltype(&OrvScanner_Deinitialize) deinitialize = nullptr;
    decltype(&OrvScanner_Start) start = nullptr;
    decltype(&OrvScanner_Stop) stop = nullptr;
    decltype(&OrvScanner_GetDeviceCount) getDeviceCount = nullptr;
    decltype(&OrvScanner_GetDeviceInfo) getDeviceInfo = nullptr;
    decltype(&OrvDevice_Connect) connect = nullptr;
    decltype(&OrvDevice_Disconnect) disconnect = nullptr;
    decltype(&OrvDevice_Send) send = nullptr;
    decltype(&OrvDevice_Receive) receive = nullptr;
    decltype(&OrvDevice_Flush) flush = nullptr;
    decltype(&Logging_Enable) loggingEnable = nullptr;
    decltype(&Logging_AppendLine) appendLine = nullptr;
    // Only the simulated flavour has these.
    std::int32_t (*playScenario)(const char*, std::int32_t, char*, std::int32_t) = nullptr;
    const char* (*worldVersion)() = nullptr;
};

}  // namespace orv
