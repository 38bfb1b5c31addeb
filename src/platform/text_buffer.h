#pragma once

#include <charconv>
#include <cstddef>
#include <memory>
#include <string_view>
#include <type_traits>

namespace orv {

// A text for a log line. Stores up to 256 bytes without the heap, so that composing a usual line
// cannot run out of memory. Appending to a longer text can throw std::bad_alloc, which leaves the
// text unchanged. The text is not zero-terminated and may contain zeros.
class TextBuffer {
  public:
    TextBuffer() = default;
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    void Append(char character) {
        Reserve(1);
        bytes[used++] = character;
    }
    void Append(std::string_view text);

    // Appends the number in decimal, in the same form in every locale.
    template <typename Integer, typename = std::enable_if_t<std::is_integral_v<Integer>>>
    void AppendNumber(Integer value) {
        Reserve(LongestNumber);
        used = static_cast<std::size_t>(
            std::to_chars(bytes + used, bytes + used + LongestNumber, value).ptr - bytes);
    }

    void Reserve(std::size_t more) {
        if (more > capacity - used) {
            Grow(more);
        }
    }

    std::string_view View() const { return {bytes, used}; }

  private:
    static constexpr std::size_t LongestNumber = 20;  // length of 2^64 - 1 and of -2^63

    void Grow(std::size_t more);

    char local[256];
    std::unique_ptr<char[]> heap;
    char* bytes = local;
    std::size_t used = 0;
    std::size_t capacity = sizeof local;
};

}  // namespace orv
