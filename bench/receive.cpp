#include <algorithm>
#include <cstring>

#include "bench/support/arrangement.h"
#include "bench/support/measure.h"

namespace orv::bench {

namespace {

constexpr std::size_t MiB = 1 << 20;

[[gnu::noinline]] ResultCode ReceiveByHand(BluetoothAddress address, std::int32_t count,
                                           std::uint8_t* buffer) {
    const std::lock_guard<std::mutex> lock(floorMutex);
    FloorLink* link = FindFloorLink(address);
    if (!link) {
        return -1;
    }
    const std::size_t taken = std::min(static_cast<std::size_t>(count), link->end - link->begin);
    std::memcpy(buffer, link->bytes.data() + link->begin, taken);
    link->begin += taken;
    return static_cast<ResultCode>(taken);
}

[[gnu::noinline]] ResultCode FlushByHand(BluetoothAddress address) {
    const std::lock_guard<std::mutex> lock(floorMutex);
    FloorLink* link = FindFloorLink(address);
    if (!link) {
        return -1;
    }
    const std::size_t dropped = link->end - link->begin;
    link->begin = link->end = 0;
    return static_cast<ResultCode>(dropped);
}

std::uint8_t buffer[MiB];

void Receive(const std::string& row, std::size_t size, int batch) {
    const auto filled = [size, batch] {
        ArrangeLinks(1);
        ArrangeQueue(size * static_cast<std::size_t>(batch));
    };
    const auto count = static_cast<std::int32_t>(size);
    Measure(row, Ours, batch, filled, [count] { return OrvDevice_Receive(1, count, buffer); });
    Measure(row, Floor, batch, filled, [count] { return ReceiveByHand(1, count, buffer); });
}

const Registered receives([] {
    Receive("receive of 1 byte", 1, 1000);
    Receive("receive of 20 bytes", 20, 1000);
    Receive("receive of 244 bytes", 244, 1000);
    Receive("receive of 4096 bytes", 4096, 100);
    Receive("receive of 1 MiB", MiB, 1);

    const auto filled = [] {
        ArrangeLinks(1);
        ArrangeQueue(244);
    };
    Measure("flush of 244 bytes", Ours, 1, filled, [] { return OrvDevice_Flush(1); });
    Measure("flush of 244 bytes", Floor, 1, filled, [] { return FlushByHand(1); });
});

}  // namespace

}  // namespace orv::bench
