#include "orv/doctor/calls.h"

#include <algorithm>

namespace orv::doctor {

namespace {

using log::Function;

constexpr std::size_t LargestPiece = 4096;

log::Subject Of(Function function, std::int32_t scanner, std::int32_t index = 0) {
    return {function, static_cast<std::uint32_t>(scanner), index};
}

log::Subject OfLink(Function function, BluetoothAddress address, std::size_t length = 0) {
    return {function, address, static_cast<std::int32_t>(length)};
}

}  // namespace

Calls::Calls(Library& loaded, const Surroundings& around) : library(loaded), surroundings(around) {}

std::list<Calls::PendingCall>::iterator Calls::Enter(Function function) {
    const Lock lock(mutex);
    return pending.insert(pending.end(), {function, std::chrono::steady_clock::now()});
}

template <typename Body>
MadeCall Calls::Make(const log::Subject& subject, Body&& body, bool alone) {
    const auto entry = Enter(subject.function);
    const std::int64_t begin = surroundings.Now();
    const ResultCode result = body();
    const MadeCall call{subject, result, surroundings.Now() - begin, alone};
    const Lock lock(mutex);
    while (isAbandoned) {
        never.wait(mutex);
    }
    pending.erase(entry);
    made.push_back(call);
    return call;
}

MadeCall Calls::Available() {
    return Make({Function::Available}, [&] { return library.BluetoothAvailable(); });
}

MadeCall Calls::Initialize() {
    return Make({Function::Initialize}, [&] { return library.InitializeScanner(); });
}

void Calls::Deinitialize(std::int32_t scanner) {
    Make(Of(Function::Deinitialize, scanner), [&] { return library.DeinitializeScanner(scanner); });
}

MadeCall Calls::Start(std::int32_t scanner) {
    return Make(Of(Function::Start, scanner), [&] { return library.StartScanner(scanner); });
}

void Calls::Stop(std::int32_t scanner) {
    Make(Of(Function::Stop, scanner), [&] { return library.StopScanner(scanner); });
}

std::vector<DiscoveredDevice> Calls::Devices(std::int32_t scanner) {
    const ResultCode count = Make(Of(Function::GetDeviceCount, scanner), [&] {
                                 return library.GetDeviceCount(scanner);
                             }).result;
    std::vector<DiscoveredDevice> devices;
    for (std::int32_t index = 0; index < count; ++index) {
        DiscoveredDevice device{};
        if (Make(Of(Function::GetDeviceInfo, scanner, index), [&] {
                return library.GetDeviceInfo(scanner, index, device);
            }).result == 0) {
            devices.push_back(device);
        }
    }
    return devices;
}

MadeCall Calls::Connect(BluetoothAddress address) {
    return Make(OfLink(Function::Connect, address), [&] { return library.Connect(address); });
}

MadeCall Calls::Disconnect(BluetoothAddress address, bool alone) {
    return Make(
        OfLink(Function::Disconnect, address), [&] { return library.Disconnect(address); }, alone);
}

MadeCall Calls::Send(BluetoothAddress address, std::string_view block, bool alone) {
    return Make(
        OfLink(Function::Send, address, block.size()), [&] { return library.Send(address, block); },
        alone);
}

std::string Calls::Receive(BluetoothAddress address) {
    std::string bytes;
    Make(OfLink(Function::Receive, address),
         [&] { return library.Receive(address, LargestPiece, bytes); });
    return bytes;
}

MadeCall Calls::Flush(BluetoothAddress address) {
    return Make(OfLink(Function::Flush, address), [&] { return library.Flush(address); });
}

std::vector<MadeCall> Calls::Made() const {
    const Lock lock(mutex);
    return made;
}

std::optional<Function> Calls::Pending(std::chrono::steady_clock::time_point latest,
                                       std::span<const Function> ignored) const {
    const Lock lock(mutex);
    for (const PendingCall& call : pending) {
        if (call.begin < latest && std::ranges::find(ignored, call.function) == ignored.end()) {
            return call.function;
        }
    }
    return std::nullopt;
}

void Calls::Abandon() {
    const Lock lock(mutex);
    isAbandoned = true;
}

}  // namespace orv::doctor
