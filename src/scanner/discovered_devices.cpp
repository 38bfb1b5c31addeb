#include "scanner/discovered_devices.h"

#include <algorithm>
#include <cstring>

namespace orv {

namespace {

// Returns a mask for the hash bits that are needed to number the buckets 0 to `last`.
std::uint32_t BucketMask(std::uint32_t last) {
    return UINT32_MAX >> __builtin_clz(last | 1);
}

// Returns the number of the bucket for a hash: the masked bits of the hash. If that bucket does not
// exist yet, the highest of these bits is cleared.
std::uint32_t BucketOf(std::uint32_t hash, std::uint32_t last) {
    const std::uint32_t mask = BucketMask(last);
    const std::uint32_t bucket = hash & mask;
    return bucket <= last ? bucket : bucket & mask >> 1;
}

}  // namespace

DiscoveredDevice* DiscoveredDevices::Find(BluetoothAddress address) {
    if (Size() == 0) {
        return nullptr;
    }
    const auto last = static_cast<std::uint32_t>(content->size - 1);
    std::uint32_t index = content->buckets[BucketOf(hashOf(address), last)];
    while (index != None) {
        Entry& entry = content->entries[index];
        if (entry.record.address == address) {
            return &entry.record;
        }
        index = entry.next;
    }
    return nullptr;
}

void DiscoveredDevices::Append(const DiscoveredDevice& device) {
    if (!content) {
        content = std::make_unique<Content>();
    }
    content->entries.MakeRoom(content->size);
    content->buckets.MakeRoom(content->size);
    AddBucket();
    const auto index = static_cast<std::uint32_t>(content->size);
    const std::uint32_t hash = hashOf(device.address);
    std::uint32_t& first = content->buckets[BucketOf(hash, index)];
    content->entries[index] = {hash, first, device};
    first = index;
    ++content->size;
}

// Adds a bucket and moves its entries from one older bucket, which contains two entries on average.
void DiscoveredDevices::AddBucket() {
    const auto added = static_cast<std::uint32_t>(content->size);
    const std::uint32_t mask = BucketMask(added);
    std::uint32_t& first = content->buckets[added];
    first = None;
    std::uint32_t* link = &content->buckets[added & mask >> 1];
    while (*link != None) {
        const std::uint32_t index = *link;
        Entry& entry = content->entries[index];
        if ((entry.hash & mask) == added) {
            *link = entry.next;
            entry.next = first;
            first = index;
        } else {
            link = &entry.next;
        }
    }
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
