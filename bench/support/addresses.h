#pragma once

#include <cstddef>
#include <cstdint>

#include "bench/support/arrangement.h"

namespace orv::bench {

enum class AddressKind { Listed, New, OtherFamily };

inline const char* NameOf(AddressKind kind) {
    return kind == AddressKind::Listed ? "listed"
           : kind == AddressKind::New  ? "new"
                                       : "other family";
}

inline const char16_t* LocalNameOf(AddressKind kind) {
    return kind == AddressKind::Listed ? u"ORV-0042"
           : kind == AddressKind::New  ? u"ORV-0043"
                                       : u"Lamp";
}

// Generates the addresses of advertisements. Addresses of listed devices repeat in an order that
// jumps across the list, so that no cache contains the next device of a long list. Addresses of
// devices without an ORV name, which the scanner does not list, never repeat.
class Addresses {
  public:
    Addresses(AddressKind ownKind, std::size_t ownCount) : kind(ownKind), count(ownCount) {}

    // Call this when the list has `listed` devices. The next new address follows the listed ones.
    void Restart(std::size_t listed) { firstNew = ListedAddress + listed; }

    BluetoothAddress Next() {
        switch (kind) {
            case AddressKind::Listed:
                place += count / 10 * 6 + 1;  // visits all devices if `count` is a power of ten
                place -= place >= count ? count : 0;
                return ListedAddress + place;
            case AddressKind::New:
                return firstNew++;
            default:
                return otherFamily += 0x9E3779B97F4A7C15;
        }
    }

  private:
    AddressKind kind;
    std::size_t count;
    std::size_t place = 0;
    BluetoothAddress firstNew = ListedAddress;
    BluetoothAddress otherFamily = 1;
};

}  // namespace orv::bench
