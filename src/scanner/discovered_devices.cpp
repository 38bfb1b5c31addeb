#include "scanner/discovered_devices.h"

#include <algorithm>
#include <cstring>

#include "frame/export_frame.h"
#include "scanner/scanner_session.h"

namespace orv {

DiscoveredDevice* DiscoveredDevices::Find(BluetoothAddress address) {
    std::size_t left = size;
    for (const auto& chunk : chunks) {
        const std::size_t used = std::min(left, ChunkSize);
        const BluetoothAddress* end = chunk->addresses + used;
        const BluetoothAddress* found =
            std::find<const BluetoothAddress*>(chunk->addresses, end, address);
        if (found != end) {
            return &chunk->records[found - chunk->addresses];
        }
        left -= used;
    }
    return nullptr;
}

const DiscoveredDevice& DiscoveredDevices::At(std::size_t index) const {
    return chunks[index / ChunkSize]->records[index % ChunkSize];
}

void DiscoveredDevices::Append(const DiscoveredDevice& device) {
    if (size == chunks.size() * ChunkSize) {
        // Left uninitialised: nothing beyond `size` is ever read.
        chunks.push_back(std::unique_ptr<Chunk>(new Chunk));
    }
    Chunk& chunk = *chunks.back();
    chunk.addresses[size % ChunkSize] = device.address;
    chunk.records[size % ChunkSize] = device;
    ++size;
}

void DiscoveredDevices::Clear() {
    chunks.clear();
    size = 0;
}

DiscoveredDevice NewRecord(BluetoothAddress address, std::string_view name, std::int16_t rssi) {
    DiscoveredDevice device{};
    device.address = address;
    SetName(device, name);
    device.rssi = rssi;
    device.value0500 = 0xFF;
    device.value1130 = 0xFF;
    return device;
}

void SetName(DiscoveredDevice& device, std::string_view name) {
    std::memset(device.name, 0, sizeof device.name);
    std::memcpy(device.name, name.data(), std::min(name.size(), sizeof device.name - 1));
}

}  // namespace orv

using namespace orv;

extern "C" ResultCode OrvScanner_GetDeviceCount(std::int32_t scannerId) {
    return RunExport(Traced("OrvScanner_GetDeviceCount", scannerId), [&]() -> ResultCode {
        const Lock lock(ScannerLock);
        const ScannerSession* session = scannerSessions.Find(scannerId);
        return session ? CountResult(session->devices.Size()) : Failure;
    });
}

extern "C" ResultCode OrvScanner_GetDeviceInfo(std::int32_t scannerId, std::int32_t index,
                                               DiscoveredDevice* info) {
    return RunExport(Traced("OrvScanner_GetDeviceInfo", scannerId, index), [&]() -> ResultCode {
        const Lock lock(ScannerLock);
        const ScannerSession* session = scannerSessions.Find(scannerId);
        if (!session || !info || index < 0 ||
            static_cast<std::size_t>(index) >= session->devices.Size()) {
            return Failure;
        }
        *info = session->devices.At(static_cast<std::size_t>(index));
        return 0;
    });
}
