#pragma once

#include "platform/abi/base.h"
#include "platform/text_buffer.h"

namespace orv {

// Owns a string of the runtime. A null handle is the empty string.
class RuntimeString {
  public:
    RuntimeString() = default;
    RuntimeString(RuntimeString&& other) noexcept : handle(other.handle) { other.handle = nullptr; }
    RuntimeString& operator=(RuntimeString&&) = delete;
    ~RuntimeString() {
        if (handle) {
            WindowsDeleteString(handle);
        }
    }

    HSTRING* Put() { return &handle; }

    // Appends the text as well-formed UTF-8. Like the platform's conversion, replaces each unpaired
    // surrogate with U+FFFD.
    void AppendUtf8To(TextBuffer& text) const;

  private:
    HSTRING handle = nullptr;
};

}  // namespace orv
