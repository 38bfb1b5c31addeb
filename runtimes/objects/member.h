#pragma once

#include <atomic>

#include "platform/abi/base.h"

namespace orv::objects {

// Describes a function of a runtime class, with the platform's names. Never destroyed. The
// constructor adds it to the list of all members, so a member at namespace scope is listed before
// the first call.
struct Member {
    // `declared` is false for a member that was created when an unimplemented function was called.
    Member(const char* ownerName, const char* memberName, bool declared = true) noexcept
        : owner(ownerName), name(memberName), isDeclared(declared), next(first.load()) {
        while (!first.compare_exchange_weak(next, this)) {
        }
    }
    Member(const Member&) = delete;
    Member& operator=(const Member&) = delete;

    static inline std::atomic<Member*> first{nullptr};

    const char* const owner;  // null for a function that belongs to no class
    const char* const name;
    const bool isDeclared;
    Member* next;

    // Data of the call observer, stored here so that counting a call needs no search.
    std::atomic<UINT32> calls{0};
    std::atomic<HRESULT> failure{S_OK};
    std::atomic<bool> hangs{false};
};

// A runtime class: its name, and QueryInterface, which all its objects have.
struct Class {
    explicit Class(const char* className) noexcept
        : name(className), queryInterface(className, "QueryInterface") {}

    const char* const name;
    Member queryInterface;
};

}  // namespace orv::objects
