#pragma once

#include <cstdint>
#include <ctime>

namespace orv::system {

// Storage for a lock of the operating system. All zeros means unlocked.
struct LockState {
    void* words[5] = {};
};

// Locking needs no memory and cannot fail. A thread must not acquire a lock that it already holds.
void AcquireLock(LockState& lock) noexcept;
void ReleaseLock(LockState& lock) noexcept;

std::tm ToLocalTime(std::time_t seconds);

// Returns bits that an attacker cannot predict. Throws when the system cannot provide any.
std::uint64_t RandomBits();

}  // namespace orv::system
