// A base class that counts references. The last Release deletes the object.
#pragma once

#include <atomic>

#include "platform/abi/base.h"

namespace orv::objects {

// A new object has one reference, which its creator owns.
template <typename... Interfaces>
class Counted : public Interfaces... {
  public:
    virtual ~Counted() = default;

    ULONG AddRef() final { return references.fetch_add(1, std::memory_order_relaxed) + 1; }
    ULONG Release() final {
        const ULONG left = references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            delete this;
        }
        return left;
    }

  private:
    std::atomic<ULONG> references{1};
};

}  // namespace orv::objects
