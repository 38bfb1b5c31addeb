#include "runtimes/simulated/world/records.h"

namespace orv::simulated {

namespace {

// Returns the pseudo-random signal strength of the next packet, which is the same in every run.
INT16 SignalOf(const DeviceRecord& device) REQUIRES(worldMutex) {
    const INT32 width = 2 * device.signalSpread + 1;
    const UINT32 chance = (device.packetsSent * 2654435761U) >> 16;
    const INT32 offset = static_cast<INT32>(chance % static_cast<UINT32>(width));
    return static_cast<INT16>(device.signal + offset - device.signalSpread);
}

}  // namespace

Packet PacketOf(const DeviceRecord& device, bool asScanResponse) {
    return {device.address, SignalOf(device), asScanResponse,
            device.packets[asScanResponse ? 1 : 0]};
}

bool DeviceRecord::SetSignal(INT32 dBm) {
    if (dBm < INT16_MIN || dBm > INT16_MAX) {
        return false;
    }
    signal = static_cast<INT16>(dBm);
    signalSpread = 0;
    return true;
}

bool DeviceRecord::SetSignalSpread(INT32 dB) {
    if (dB < 0 || dB > LargestSpread) {
        return false;
    }
    signalSpread = static_cast<INT16>(dB);
    return true;
}

bool DeviceRecord::SetLargestWrite(INT32 bytes) {
    if (bytes < -1) {
        return false;
    }
    largestWrite.reset();
    if (bytes >= 0) {
        largestWrite = static_cast<std::size_t>(bytes);
    }
    return true;
}

bool DeviceRecord::SetEcho(bool on, INT32 intervalMs) {
    if (intervalMs < 0) {
        return false;
    }
    echo.on = on;
    echo.interval = std::chrono::milliseconds(intervalMs);
    return true;
}

bool DeviceRecord::SetInterval(INT32 milliseconds) {
    if (milliseconds < 0) {
        return false;
    }
    advertisingInterval = std::chrono::milliseconds(milliseconds);
    return true;
}

}  // namespace orv::simulated
