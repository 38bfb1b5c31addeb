#include "runtimes/simulated/world/call_recorder.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <thread>

namespace orv::simulated {

using objects::Argument;
using objects::Ledger;
using objects::Lock;
using objects::Member;

namespace {

std::string NameOf(const Member& member) {
    std::string name;
    if (member.owner != nullptr) {
        name.append(member.owner).append(".");
    }
    return name.append(member.name);
}

bool IsNamed(const Member& member, const char* name) {
    if (member.owner == nullptr) {
        return std::strcmp(member.name, name) == 0;
    }
    const std::size_t ownerLength = std::strlen(member.owner);
    return std::strncmp(member.owner, name, ownerLength) == 0 && name[ownerLength] == '.' &&
           std::strcmp(member.name, name + ownerLength + 1) == 0;
}

// Returns an entry's `number`. It packs the number of resets, the number of the call, and whether
// the call's argument is a number.
UINT64 EntryNumber(UINT32 generation, UINT64 call, bool hasValue) {
    return UINT64{generation} << 40 | (call & ((UINT64{1} << 39) - 1)) << 1 | (hasValue ? 1 : 0);
}

}  // namespace

CallRecorder::CallRecorder()
    : ledger(new Ledger),
      // Uses calloc, because the system then zeroes each page on first use. Never freed.
      entries(static_cast<Entry*>(std::calloc(Remembered, sizeof(Entry)))) {
    if (entries == nullptr) {
        throw std::bad_alloc();
    }
    ledgers.push_back(ledger);
}

HRESULT CallRecorder::Called(Member& member, const Argument& argument) {
    member.calls.fetch_add(1);
    const UINT64 call = calls.fetch_add(1) + 1;
    Remember(call, member, argument);
    if (awaiting.load() != 0) {
        const Lock lock(mutex);
        changed.NotifyAll();
    }
    return attention.load() == 0 ? S_OK : Attend(member, call);
}

void CallRecorder::Remember(UINT64 call, const Member& member, const Argument& argument) {
    Entry& entry = entries[call % Remembered];
    entry.number.store(0, std::memory_order_relaxed);
    // Release order: a reader that has read a new value must also see that `number` is 0.
    entry.member.store(&member, std::memory_order_release);
    entry.text.store(argument.text, std::memory_order_release);
    entry.value.store(argument.number, std::memory_order_release);
    entry.number.store(EntryNumber(generation.load(std::memory_order_relaxed), call,
                                   argument.present && argument.text == nullptr),
                       std::memory_order_release);
}

HRESULT CallRecorder::Attend(Member& member, UINT64 call) {
    if (member.hangs.load()) {
        const Lock lock(mutex);
        while (member.hangs.load()) {
            changed.Wait(mutex);
        }
    }
    if (failingCall.load() == call) {
        return failingCode.load();
    }
    return member.failure.load();
}

HRESULT CallRecorder::UnexpectedlyCalled(const char* owner, const char* name) {
    Lock lock(mutex);
    Member& member = MemberForName(owner, name);
    unexpected.push_back(&member);
    lock.Release();
    const HRESULT arrangedAnswer = Called(member, Argument());
    return arrangedAnswer == S_OK ? E_NOTIMPL : arrangedAnswer;
}

Member& CallRecorder::MemberForName(const char* owner, const char* name) {
    for (Member* member = Member::first; member != nullptr; member = member->next) {
        if (member->owner != nullptr && std::strcmp(member->owner, owner) == 0 &&
            std::strcmp(member->name, name) == 0) {
            return *member;
        }
    }
    auto* const made = new Member(owner, name, false);
    Apply(*made);
    return *made;
}

void CallRecorder::Apply(Member& member) {
    Arranged how;
    for (const auto& entry : arranged) {
        if (IsNamed(member, entry.first.c_str())) {
            how = entry.second;
        }
    }
    member.failure.store(how.failure);
    member.hangs.store(how.hangs);
}

CallRecorder::Arranged CallRecorder::CurrentlyArranged(const char* name) {
    const auto found = arranged.find(name);
    return found == arranged.end() ? Arranged() : found->second;
}

void CallRecorder::Arrange(const char* name, Arranged how) {
    if (how.failure == S_OK && !how.hangs) {
        arranged.erase(name);
    } else {
        arranged[name] = how;
        attention.fetch_or(MembersArranged);
    }
    for (Member* member = Member::first; member != nullptr; member = member->next) {
        Apply(*member);
    }
    if (arranged.empty()) {
        attention.fetch_and(~UINT32{MembersArranged});
    }
    changed.NotifyAll();
}

void CallRecorder::FailMember(const char* name, HRESULT code) {
    const Lock lock(mutex);
    Arranged how = CurrentlyArranged(name);
    how.failure = code;
    Arrange(name, how);
}

void CallRecorder::Hang(const char* name, bool hang) {
    const Lock lock(mutex);
    Arranged how = CurrentlyArranged(name);
    how.hangs = hang;
    Arrange(name, how);
}

bool CallRecorder::HasMember(const char* name) {
    const Member* member = Member::first;
    while (member != nullptr && !(member->isDeclared && IsNamed(*member, name))) {
        member = member->next;
    }
    return member != nullptr;
}

UINT64 CallRecorder::FailCall(UINT64 n, HRESULT code) {
    const Lock lock(mutex);
    const UINT64 made = calls.load();
    const UINT64 previous = failingCall.load();
    failingCode.store(code);
    failingCall.store(n == 0 ? 0 : made + n);
    if (n == 0) {
        attention.fetch_and(~UINT32{PlanArranged});
    } else {
        attention.fetch_or(PlanArranged);
    }
    return previous > made ? previous - made : 0;
}

void CallRecorder::ReleaseAll() {
    FailCall(0, S_OK);
    const Lock lock(mutex);
    arranged.clear();
    attention.store(0);
    for (Member* member = Member::first; member != nullptr; member = member->next) {
        Apply(*member);
    }
    changed.NotifyAll();
}

void CallRecorder::Begin() {
    const Lock lock(mutex);
    Ledger* unused = nullptr;
    for (Ledger* candidate : ledgers) {
        if (candidate != ledger && candidate->references == 0 && candidate->handlers == 0) {
            unused = candidate;
        }
    }
    if (unused == nullptr) {
        ledgers.push_back(nullptr);
        ledgers.back() = unused = new Ledger;
    }
    ledger.store(unused, std::memory_order_release);
    for (Member* member = Member::first; member != nullptr; member = member->next) {
        member->calls.store(0);
    }
    unexpected.clear();
    improperHandlers.store(0);
    generation.fetch_add(1);
    calls.store(0);
    changed.NotifyAll();
}

UINT64 CallRecorder::CallCount(const char* name) {
    if (name == nullptr) {
        return calls.load();
    }
    const Lock lock(mutex);
    UINT64 count = 0;
    for (const Member* member = Member::first; member != nullptr; member = member->next) {
        count += IsNamed(*member, name) ? member->calls.load() : 0;
    }
    return count;
}

bool CallRecorder::AwaitCalls(const char* name, UINT64 count) {
    // After the limit, checks until there were this many checks. If the system has stopped the
    // process, the thread that makes the call thus gets time to run.
    constexpr int LeastChecks = 1000;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    awaiting.fetch_add(1);
    bool reached = false;
    for (int checks = 0; !(reached = CallCount(name) >= count) &&
                         (checks < LeastChecks || std::chrono::steady_clock::now() < end);
         ++checks) {
        const Lock lock(mutex);
        // Waits only briefly, because a call between the check and the wait does not wake this
        // thread.
        changed.WaitFor(mutex, std::chrono::milliseconds(2));
    }
    awaiting.fetch_sub(1);
    return reached;
}

bool CallRecorder::CallAt(UINT64 index, std::string& text) {
    const UINT64 call = index + 1;
    const UINT32 current = generation.load();
    while (call <= calls.load() && call + Remembered > calls.load()) {
        const Entry& entry = entries[call % Remembered];
        const UINT64 number = entry.number.load(std::memory_order_acquire);
        const Member* const member = entry.member.load(std::memory_order_acquire);
        const char* const argument = entry.text.load(std::memory_order_acquire);
        const UINT64 value = entry.value.load(std::memory_order_acquire);
        const bool hasValue = (number & 1) != 0;
        if (number == EntryNumber(current, call, hasValue) &&
            number == entry.number.load(std::memory_order_relaxed)) {
            text = NameOf(*member);
            if (argument != nullptr) {
                text.append(" ").append(argument);
            } else if (hasValue) {
                text.append(" ").append(std::to_string(value));
            }
            return true;
        }
        if (current != generation.load()) {
            return false;
        }
        std::this_thread::yield();
    }
    return false;
}

const char* CallRecorder::Text(const std::string& text) {
    const Lock lock(mutex);
    return texts.insert(text).first->c_str();
}

std::size_t CallRecorder::UnexpectedCallCount() {
    const Lock lock(mutex);
    return unexpected.size();
}

bool CallRecorder::UnexpectedCallAt(std::size_t index, std::string& text) {
    const Lock lock(mutex);
    if (index >= unexpected.size()) {
        return false;
    }
    text = NameOf(*unexpected[index]);
    return true;
}

}  // namespace orv::simulated
