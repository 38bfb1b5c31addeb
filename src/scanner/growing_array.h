#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/failure.h"

namespace orv {

// An array that grows without moving its elements, which it stores in chunks. The first eight
// chunks have eight elements each; then each doubling of the length adds eight chunks. At most an
// eighth of the memory is unused.
template <typename T>
class GrowingArray {
  public:
    static constexpr std::size_t MaxLength = std::size_t{1} << 31;

    // Returns an element. MakeRoom must have been called for `index`.
    T& operator[](std::size_t index) const {
        const std::size_t bits = ChunkBits(index);
        return chunks[ChunkOf(index, bits)][index & ((std::size_t{1} << bits) - 1)];
    }

    // Allocates the element at `index` without initializing it. Throws if memory runs out or
    // `index` is MaxLength or more; the array is unchanged then.
    void MakeRoom(std::size_t index) {
        if (index >= MaxLength) {
            RaiseFailure(E_OUTOFMEMORY);
        }
        const std::size_t bits = ChunkBits(index);
        std::unique_ptr<T[]>& chunk = chunks[ChunkOf(index, bits)];
        if (!chunk) {
            chunk.reset(new T[std::size_t{1} << bits]);
        }
    }

  private:
    // Returns the binary logarithm of the size of the chunk that contains `index`.
    static std::size_t ChunkBits(std::size_t index) {
        return 60 - static_cast<std::size_t>(__builtin_clzll(index | 64));
    }

    static std::size_t ChunkOf(std::size_t index, std::size_t bits) {
        return (index >> bits) + 8 * (bits - 3);
    }

    static constexpr std::size_t ChunkCount = 16 + 8 * (30 - 6);  // enough for MaxLength

    std::unique_ptr<T[]> chunks[ChunkCount];
};

}  // namespace orv
