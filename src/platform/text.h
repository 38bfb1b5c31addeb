// Text under construction, for lines of the log: on the stack while it is short.
#pragma once

#include <charconv>
#include <cstddef>
#include <memory>
#include <string_view>
#include <type_traits>

namespace orv {

// Holds up to 256 bytes without touching the heap, so that composing an ordinary line cannot run
// out of memory; beyond that it grows on the heap and can fail with std::bad_alloc, which leaves
// what was there. The bytes are not zero-terminated and may contain zeros.
class Text {
  public:
    Text() = default;
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;

    void Append(char character) {
        Reserve(1);
        bytes[used++] = character;
    }
    void Append(std::string_view text);

    // In decimal, with a leading minus when negative; the same in every locale.
    template <typename Integer, typename = std::enable_if_t<std::is_integral_v<Integer>>>
    void AppendNumber(Integer value) {
        Reserve(LongestNumber);
        used = static_cast<std::size_t>(
            std::to_chars(bytes + used, bytes + used + LongestNumber, value).ptr - bytes);
    }

    // Makes room for `more` bytes in one step.
    void Reserve(std::size_t more) {
        if (more > capacity - used) {
            Grow(more);
        }
    }

    std::string_view View() const { return {bytes, used}; }

  private:
    static constexpr std::size_t LongestNumber = 20;  // 2^64 - 1, or a signed 64-bit minimum

    void Grow(std::size_t more);

    char local[256];
    std::unique_ptr<char[]> heap;
    char* bytes = local;
    std::size_t used = 0;
    std::size_t capacity = sizeof local;
};

}  // namespace orv
