#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "orv/library/module.h"
#include "quelvixwinlib.h"
#include "quelvixwinlib_simulated.h"

namespace orv {

// Convert paths from and to UTF-8.
std::filesystem::path PathOf(std::string_view text);
std::string TextOf(const std::filesystem::path& path);

// While the log is on, each call logs its result and duration.
class Library {
  public:
    // Throws a Problem if the file cannot be loaded or lacks a function.
    explicit Library(const std::filesystem::path& file);

    const std::filesystem::path& File() const { return file; }
    std::string Version() const;
    bool IsSimulated() const { return isSimulated; }
    template <typename Function>
    Function* Find(const char* name) const {
        return reinterpret_cast<Function*>(module::Find(handle, name));
    }

    // Uses simulated time if `simulatedTime` is set and the library supports it. Changes nothing if
    // it throws a Problem.
    void PlayScenario(const std::filesystem::path& scenario, bool simulatedTime) const;

    // Switches the log on. First renames an earlier log and returns its new path, or an empty path.
    // Throws a Problem if the log cannot be written.
    std::filesystem::path EnableLog();
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
    ResultCode Receive(BluetoothAddress address, std::size_t most, std::string& bytes);
    ResultCode Flush(BluetoothAddress address);

  private:
    std::filesystem::path KeepLog() const;
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
    // Null if the library lacks these functions.
    std::int32_t (*playScenario)(const char*, std::int32_t, char*, std::int32_t) = nullptr;
    const char* (*worldVersion)() = nullptr;
};

}  // namespace orv
