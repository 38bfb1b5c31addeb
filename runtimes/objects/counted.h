// A base class that counts references. The last Release deletes the object.
#pragma once

#include <atomic>

#include "platform/abi/base.h"

namespace orv::objects {

class ReferenceCount {
  public:
    ULONG Add() { return count.fetch_add(1, std::memory_order_relaxed) + 1; }
    template <typename Owner>
    ULONG Remove(Owner* owner) {
        const ULONG left = count.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            delete owner;
        }
        return left;
    }

  private:
    std::atomic<ULONG> count{1};
};

// A new object has one reference, which its creator owns.
template <typename... Interfaces>
class Counted : public Interfaces... {
  public:
    virtual ~Counted() = default;

    ULONG AddRef() final { return references.Add(); }
    ULONG Release() final { return references.Remove(this); }

  private:
    ReferenceCount references;
};

}  // namespace orv::objects
