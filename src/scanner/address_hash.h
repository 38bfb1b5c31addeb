#pragma once

#include <cstdint>

#include "quelvixwinlib.h"

namespace orv {

// Computes SipHash-1-3 of the eight bytes of an address. An attacker can choose the addresses that
// a scanner receives, but without the key cannot choose addresses with colliding hashes.
class AddressHash {
  public:
    struct Key {
        std::uint64_t first;
        std::uint64_t second;
    };

    explicit AddressHash(const Key& secret) : key(secret) {}

    std::uint32_t operator()(BluetoothAddress address) const {
        constexpr std::uint64_t LengthBlock = std::uint64_t{sizeof address} << 56;
        State state{key.first ^ 0x736f6d6570736575, key.second ^ 0x646f72616e646f6d,
                    key.first ^ 0x6c7967656e657261, key.second ^ 0x7465646279746573};
        state.Take(address);
        state.Take(LengthBlock);
        state.c ^= 0xFF;
        for (int round = 0; round < 3; ++round) {
            state.Mix();
        }
        return static_cast<std::uint32_t>(state.a ^ state.b ^ state.c ^ state.d);
    }

  private:
    struct State {
        std::uint64_t a, b, c, d;

        static std::uint64_t Rotate(std::uint64_t value, int bits) {
            return value << bits | value >> (64 - bits);
        }
        void Mix() {
            a += b, c += d;
            b = Rotate(b, 13) ^ a, d = Rotate(d, 16) ^ c;
            a = Rotate(a, 32);
            c += b, a += d;
            b = Rotate(b, 17) ^ c, d = Rotate(d, 21) ^ a;
            c = Rotate(c, 32);
        }
        void Take(std::uint64_t block) {
            d ^= block;
            Mix();
            a ^= block;
        }
    };

    Key key;
};

}  // namespace orv
