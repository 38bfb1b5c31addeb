// The list of one scanner session: the devices that its watcher has heard, in order of first
// sighting.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "quelvixwinlib.h"

namespace orv {

// Not synchronised: ScannerLock guards every list.
//
// Records are kept in chunks, with their addresses once more side by side: a device is looked for
// by a walk over all addresses, for each advertisement, and so the walk touches eight bytes a
// device instead of a whole record.
class DiscoveredDevices {
  public:
    std::size_t Size() const { return size; }

    // Null when the address is not listed. Valid until Clear.
    DiscoveredDevice* Find(BluetoothAddress address);

    // `index` below Size().
    const DiscoveredDevice& At(std::size_t index) const;

    // Raises when memory runs out; the list is unchanged then.
    void Append(const DiscoveredDevice& device);

    void Clear();

  private:
    static constexpr std::size_t ChunkSize = 64;
    struct Chunk {
        BluetoothAddress addresses[ChunkSize];
        DiscoveredDevice records[ChunkSize];
    };

    std::vector<std::unique_ptr<Chunk>> chunks;
    std::size_t size = 0;
};

// A record as a first advertisement makes it: no values of scan responses yet, padding zero.
DiscoveredDevice NewRecord(BluetoothAddress address, std::string_view name, std::int16_t rssi);

// The first 29 bytes of the name, zeros after them; a character may be cut.
void SetName(DiscoveredDevice& device, std::string_view name);

}  // namespace orv
