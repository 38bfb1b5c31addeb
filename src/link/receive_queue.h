#pragma once

#include <cstddef>
#include <cstdint>

namespace orv {

// A queue for the bytes that a device has sent and the host has not yet received, limited by memory
// only. Not synchronized: the connection table's mutex guards every queue.
//
// Stores the bytes in a linked list of blocks, so that appending never moves bytes and Take copies
// whole ranges. Take keeps the last block of an empty queue, so that regular polling does not
// allocate.
class ReceiveQueue {
  public:
    ReceiveQueue() = default;
    ReceiveQueue(const ReceiveQueue&) = delete;
    ReceiveQueue& operator=(const ReceiveQueue&) = delete;
    ~ReceiveQueue() { Clear(); }

    std::size_t Size() const { return size; }

    // Appends single bytes. The destructor updates the queue, also after an exception. Until
    // then, do not use the queue in any other way.
    class Filling {
      public:
        explicit Filling(ReceiveQueue& filled) : queue(filled) { Open(); }
        ~Filling() { Commit(); }
        Filling(const Filling&) = delete;
        Filling& operator=(const Filling&) = delete;

        // Returns the address for the next byte. Throws when memory runs out; the earlier bytes
        // stay in the queue.
        std::uint8_t* Place() {
            if (place == end) {
                Commit();
                queue.AddBlock();
                Open();
            }
            return place;
        }
        // Appends the byte that the caller has stored at Place().
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
        std::uint8_t* begin;  // first byte not yet counted in the queue's size
        std::uint8_t* place;
        std::uint8_t* end;
    };

    // Appends a byte. Throws when memory runs out; the queue is unchanged then.
    void Append(std::uint8_t byte) {
        Filling filling(*this);
        *filling.Place() = byte;
        filling.Add();
    }

    // Moves at most `count` bytes from the front to `target` and returns their number.
    std::size_t Take(std::uint8_t* target, std::size_t count);

    // Removes all bytes, frees their storage and returns their number.
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
    std::size_t firstBegin = 0;  // index of the oldest byte in `first`
    std::size_t lastEnd = 0;     // index after the newest byte in `last`
    std::size_t size = 0;
};

}  // namespace orv
