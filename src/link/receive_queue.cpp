#include "link/receive_queue.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace orv {

std::size_t ReceiveQueue::Take(std::uint8_t* target, std::size_t count) {
    const std::size_t taken = std::min(count, size);
    for (std::size_t left = taken; left > 0;) {
        const std::size_t end = first == last ? lastEnd : BlockSize;
        const std::size_t stretch = std::min(left, end - firstBegin);
        std::memcpy(target, first->bytes + firstBegin, stretch);
        target += stretch;
        left -= stretch;
        size -= stretch;
        firstBegin += stretch;
        if (firstBegin == end && first != last) {
            DropFirstBlock();
        }
    }
    if (size == 0) {
        firstBegin = lastEnd = 0;
    }
    return taken;
}

std::size_t ReceiveQueue::Clear() {
    while (first) {
        DropFirstBlock();
    }
    last = nullptr;
    return std::exchange(size, 0);
}

void ReceiveQueue::AddBlock() {
    auto* added = new Block;  // uninitialized: bytes are written before they are read
    added->next = nullptr;
    (last ? last->next : first) = added;
    last = added;
    lastEnd = 0;
}

void ReceiveQueue::DropFirstBlock() {
    delete std::exchange(first, first->next);
    firstBegin = 0;
}

}  // namespace orv
