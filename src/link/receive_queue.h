// The bytes that a device has sent and the host has not taken.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orv {

// First in, first out; no limit but memory. Not synchronised: the connection table's mutex guards
// every queue.
//
// Bytes lie in a chain of blocks, so that appending never moves what is queued and taking copies
// whole stretches. The last block is kept when the queue runs empty: a host that polls steadily
// costs no allocation.
class ReceiveQueue {
  public:
    ReceiveQueue() = default;
    ReceiveQueue(ReceiveQueue&& other) noexcept;
    ReceiveQueue& operator=(ReceiveQueue&&) = delete;
    ~ReceiveQueue() { Clear(); }

    std::size_t Size() const { return size; }

    // Raises when memory runs out; what was queued is unchanged then.
    void Append(std::uint8_t byte) {
        if (!last || lastEnd == BlockSize) {
            AddBlock();
        }
        last->bytes[lastEnd++] = byte;
        ++size;
    }

    // Moves up to `count` bytes from the front to `target` and returns how many.
    std::size_t Take(std::uint8_t* target, std::size_t count);

    // Drops all bytes and releases their storage. Returns how many there were.
    std::size_t Clear();

  private:
    static constexpr std::size_t BlockSize = 4096 - 2 * sizeof(void*);
    struct Block {
        Block* next;
        std::uint8_t bytes[BlockSize];
    };

    void AddBlock();
    void DropFirstBlock();

    Block* first = nullptr;
    Block* last = nullptr;
    std::size_t firstBegin = 0;  // of the bytes in `first`
    std::size_t lastEnd = 0;     // of the bytes in `last`
    std::size_t size = 0;
};

}  // namespace orv
