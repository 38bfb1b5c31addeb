// The list of devices that one scanner session has found, in order of discovery.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "quelvixwinlib.h"
#include "scanner/address_hash.h"
#include "scanner/growing_array.h"

namespace orv {

// Not synchronized: scannerMutex guards every list.
//
// A chained hash table finds a device by its address. Each new device adds a bucket and moves some
// entries of one older bucket to it (linear hashing), so that the cost of an operation does not
// depend on the number of devices. Each device needs 76 bytes, and up to an eighth more is
// reserved.
class DiscoveredDevices {
  public:
    struct Content;

    // The key must be secret: an attacker who knows it can choose addresses that make Find slow.
    explicit DiscoveredDevices(const AddressHash::Key& key) : hashOf(key) {}

    std::size_t Size() const;

    // Returns the record of the address, or null. The pointer is valid until the list is emptied.
    DiscoveredDevice* Find(BluetoothAddress address);

    // `index` must be less than Size().
    const DiscoveredDevice& At(std::size_t index) const;

    // Appends a device, whose address must not be in the list. Throws when memory runs out; the
    // list is unchanged then.
    void Append(const DiscoveredDevice& device);

    // Empties the list and returns its memory. The caller frees the memory after releasing the
    // lock, because that takes milliseconds for a million devices.
    [[nodiscard]] std::unique_ptr<Content> TakeContent();

  private:
    static constexpr std::uint32_t None = UINT32_MAX;

    struct Entry {
        std::uint32_t hash;
        std::uint32_t next;  // next entry in the same bucket, or None
        DiscoveredDevice record;
    };

    void AddBucket();

    AddressHash hashOf;
    std::unique_ptr<Content> content;  // null until the first device is appended
};

struct DiscoveredDevices::Content {
    GrowingArray<Entry> entries;
    GrowingArray<std::uint32_t> buckets;  // first entry of each bucket, or None
    std::size_t size = 0;                 // number of entries and of buckets
};

inline std::size_t DiscoveredDevices::Size() const {
    return content ? content->size : 0;
}

inline const DiscoveredDevice& DiscoveredDevices::At(std::size_t index) const {
    return content->entries[index].record;
}

inline std::unique_ptr<DiscoveredDevices::Content> DiscoveredDevices::TakeContent() {
    return std::move(content);
}

DiscoveredDevice NewRecord(BluetoothAddress address, std::string_view name, std::int16_t rssi);

// Stores the first 29 bytes of the name, then zeros. The last character may be cut.
void SetName(DiscoveredDevice& device, std::string_view name);

}  // namespace orv
