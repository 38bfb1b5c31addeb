// Text of the runtime: its string handle, and UTF-16 to UTF-8.
#pragma once

#include "platform/abi/base.h"
#include "platform/text.h"

namespace orv {

// Owns a runtime string; null is the empty one.
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

    // Appends the text in UTF-8. Each surrogate without its partner becomes U+FFFD, as the
    // platform's own conversion has it, so the outcome is always well-formed.
    void AppendUtf8To(Text& text) const;

  private:
    HSTRING handle = nullptr;
};

}  // namespace orv
