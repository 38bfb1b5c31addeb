#include "platform/text_buffer.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace orv {

void TextBuffer::Append(std::string_view text) {
    if (!text.empty()) {
        Reserve(text.size());
        std::memcpy(bytes + used, text.data(), text.size());
        used += text.size();
    }
}

void TextBuffer::Grow(std::size_t more) {
    const std::size_t larger = std::max(capacity * 2, used + more);
    std::unique_ptr<char[]> grown(new char[larger]);
    std::memcpy(grown.get(), bytes, used);
    heap = std::move(grown);
    bytes = heap.get();
    capacity = larger;
}

}  // namespace orv
