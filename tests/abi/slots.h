// Determines the vtable slot that the compiler chose for a virtual function of src/platform/abi.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace orv {

// A pointer to a virtual function contains the byte offset of its vtable slot, plus one. Callers
// write orv::SlotOf to avoid argument-dependent lookup, which needs complete types.
template <typename Member>
int SlotOf(Member member) {
    std::ptrdiff_t words[2];
    static_assert(sizeof(member) == sizeof(words));
    std::memcpy(words, &member, sizeof(words));
    return static_cast<int>((words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

// Adds a virtual function, whose slot index is the number of slots of `Interface`.
template <typename Interface>
struct Extended : Interface {
    virtual std::int32_t BehindTheLastSlot() = 0;
};
template <typename Interface>
int SlotCount() {
    return orv::SlotOf(&Extended<Interface>::BehindTheLastSlot);
}

}  // namespace orv
