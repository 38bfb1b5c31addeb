#include "orv/library/library.h"

#include <chrono>

#include "orv/problem.h"

namespace orv {

std::filesystem::path PathOf(std::string_view text) {
    return std::u8string(text.begin(), text.end());
}

std::string TextOf(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

template <typename Function>
void Library::Load(Function*& function, const char* name, bool required) {
    function = Find<Function>(name);
    if (required && !function) {
        throw Problem(ExitStatus::NoLibrary, TextOf(file) + " has no function " + name +
                                                 ": it is a different library, or an older one. "
                                                 "Give the right file with --library PATH");
    }
}

Library::Library(const std::filesystem::path& path) : file(path) {
    std::error_code missing;
    if (!std::filesystem::exists(path, missing)) {
        throw Problem(ExitStatus::NoLibrary,
                      "there is no library " + TextOf(path) +
                          ". Copy it there, or give its path with --library PATH");
    }
    std::string error;
    handle = module::Load(path, error);
    if (!handle) {
        throw Problem(ExitStatus::NoLibrary, TextOf(path) + " cannot be loaded: " + error);
    }
    file = module::FileOf(handle, path);
    Load(bluetoothAvailable, "BluetoothAvailable");
    Load(initialize, "OrvScanner_Initialize");
    Load(deinitialize, "OrvScanner_Deinitialize");
    Load(start, "OrvScanner_Start");
    Load(stop, "OrvScanner_Stop");
    Load(getDeviceCount, "OrvScanner_GetDeviceCount");
    Load(getDeviceInfo, "OrvScanner_GetDeviceInfo");
    Load(connect, "OrvDevice_Connect");
    Load(disconnect, "OrvDevice_Disconnect");
    Load(send, "OrvDevice_Send");
    Load(receive, "OrvDevice_Receive");
    Load(flush, "OrvDevice_Flush");
    Load(loggingEnable, "Logging_Enable");
    Load(appendLine, "Logging_AppendLine");
    isSimulated = module::Find(handle, "OrvWorld_Reset") != nullptr;
    Load(playScenario, "OrvWorld_PlayScenario", false);
    Load(worldVersion, "OrvWorld_Version", false);
}

std::string Library::Version() const {
    const std::string version = module::VersionOf(handle, file);
    return !version.empty() ? version : worldVersion ? worldVersion() : "unknown";
}

void Library::PlayScenario(const std::filesystem::path& scenario, bool simulatedTime) const {
    if (!playScenario) {
        throw Problem(
            ExitStatus::NoLibrary,
            TextOf(file) +
                " cannot play scenarios: it is too old. Give a newer one with --library PATH");
    }
    char error[1000] = "";
    if (playScenario(TextOf(scenario).c_str(), simulatedTime, error, sizeof error) < 0) {
        throw Problem(ExitStatus::FileFailed, error);
    }
}

std::filesystem::path Library::LogFile() const {
    return file.parent_path() / PathOf(TextOf(file.filename()) + ".log");
}

std::filesystem::path Library::KeepLog() const {
    const std::filesystem::path log = LogFile();
    std::error_code error;
    if (std::filesystem::file_size(log, error) == 0 || error) {
        return {};
    }
    std::filesystem::path kept;
    int number = 0;
    do {
        kept = log;
        kept += '.' + std::to_string(++number);
    } while (std::filesystem::exists(kept, error));
    std::filesystem::rename(log, kept, error);
    if (error) {
        throw Problem(ExitStatus::FileFailed,
                      "--log would empty the log " + TextOf(log) + ", which cannot be renamed: " +
                          error.message() + ". Copy it, remove it, and run the command again");
    }
    return kept;
}

std::filesystem::path Library::EnableLog() {
    std::filesystem::path kept = KeepLog();
    if (loggingEnable() == ORV_FAILED) {
        throw Problem(ExitStatus::FileFailed,
                      "the log " + TextOf(LogFile()) +
                          " cannot be written. Copy the library to a folder where you may write, "
                          "and give its path with --library PATH");
    }
    logging = true;
    return kept;
}

template <typename Body>
ResultCode Library::Call(const char* name, std::initializer_list<std::uint64_t> traced,
                         Body&& body) {
    using namespace std::chrono;
    const auto before = steady_clock::now();
    const ResultCode result = body();
    if (logging) {
        const auto ms = duration_cast<milliseconds>(steady_clock::now() - before).count();
        std::string line =
            "Returned " + std::to_string(result) + " after " + std::to_string(ms) + " ms: " + name;
        for (const std::uint64_t argument : traced) {
            line += ' ' + std::to_string(static_cast<std::int64_t>(argument));
        }
        appendLine(line.data(), static_cast<std::int32_t>(line.size()));
    }
    return result;
}

namespace {

std::uint64_t Traced(std::int32_t number) {
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(number));
}

}  // namespace

ResultCode Library::BluetoothAvailable() {
    return Call("BluetoothAvailable", {}, [&] { return bluetoothAvailable(); });
}

ResultCode Library::InitializeScanner() {
    return Call("OrvScanner_Initialize", {}, [&] { return initialize(); });
}

ResultCode Library::DeinitializeScanner(std::int32_t scanner) {
    return Call("OrvScanner_Deinitialize", {Traced(scanner)},
                [&] { return deinitialize(scanner); });
}

ResultCode Library::StartScanner(std::int32_t scanner) {
    return Call("OrvScanner_Start", {Traced(scanner)}, [&] { return start(scanner); });
}

ResultCode Library::StopScanner(std::int32_t scanner) {
    return Call("OrvScanner_Stop", {Traced(scanner)}, [&] { return stop(scanner); });
}

ResultCode Library::GetDeviceCount(std::int32_t scanner) {
    return Call("OrvScanner_GetDeviceCount", {Traced(scanner)},
                [&] { return getDeviceCount(scanner); });
}

ResultCode Library::GetDeviceInfo(std::int32_t scanner, std::int32_t index,
                                  DiscoveredDevice& device) {
    return Call("OrvScanner_GetDeviceInfo", {Traced(scanner), Traced(index)},
                [&] { return getDeviceInfo(scanner, index, &device); });
}

ResultCode Library::Connect(BluetoothAddress address) {
    return Call("OrvDevice_Connect", {address}, [&] { return connect(address); });
}

ResultCode Library::Disconnect(BluetoothAddress address) {
    return Call("OrvDevice_Disconnect", {address}, [&] { return disconnect(address); });
}

ResultCode Library::Send(BluetoothAddress address, std::string_view block) {
    const auto length = static_cast<std::int32_t>(block.size());
    return Call("OrvDevice_Send", {address, Traced(length)}, [&] {
        return send(address, length, reinterpret_cast<const std::uint8_t*>(block.data()));
    });
}

ResultCode Library::Receive(BluetoothAddress address, std::size_t most, std::string& bytes) {
    bytes.resize(most);
    const ResultCode taken = Call("OrvDevice_Receive", {address}, [&] {
        return receive(address, static_cast<std::int32_t>(most),
                       reinterpret_cast<std::uint8_t*>(bytes.data()));
    });
    bytes.resize(taken > 0 ? static_cast<std::size_t>(taken) : 0);
    return taken;
}

ResultCode Library::Flush(BluetoothAddress address) {
    return Call("OrvDevice_Flush", {address}, [&] { return flush(address); });
}

}  // namespace orv
