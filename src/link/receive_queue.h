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
    ReceiveQueue(const ReceiveQueue&) = delete;
    ReceiveQueue& operator=(const ReceiveQueue&) = delete;
    ~ReceiveQueue() { Clear(); }

    std::size_t Size() const { return size; }

    // Bytes on their way into the queue, which has them when this goes out of scope, also by a
    // failure. Until then nothing else may be done with the queue. It exists so that a value is
    // appended byte by byte without a look at the queue for each.
    class Filling {
      public:
        explicit Filling(ReceiveQueue& filled) : queue(filled) { Open(); }
        ~Filling() { Commit(); }
        Filling(const Filling&) = delete;
        Filling& operator=(const Filling&) = delete;

        // Where the next byte belongs. Raises when memory runs out; all that was added stays.
        std::uint8_t* Place() {
            if (place == end) {
                Commit();
                queue.AddBlock();
                Open();
            }
            return place;
        }
        // The byte is there.
        void Add() { ++place; }

      private:
        void Open() {
            begin = place = queue.last ? queue.last->bytes + queue.lastEnd : nullptr;
            end = queue.last ? queue.last->bytes + BlockSize : nullptr;
        }
        void Commit() {
            queue.lastEnd += static_cast<std::size_t>(place - begin);
            queue.size += static_cast<std::size_t>(place - begin);
            begin = place;
        }

        ReceiveQueue& queue;
        std::uint8_t* begin;  // of what the queue does not know of yet
        std::uint8_t* place;
        std::uint8_t* end;
    };

    // Raises when memory runs out; what was queued is unchanged then.
    void Append(std::uint8_t byte) {
        Filling filling(*this);
        *filling.Place() = byte;
        filling.Add();
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
    std::size_t lastEnd = 0;     // of the bytes in `last`; means nothing while there is none
    std::size_t size = 0;
};

}  // namespace orv
