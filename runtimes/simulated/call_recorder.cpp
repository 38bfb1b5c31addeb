// What the library calls.
#include "runtimes/simulated/call_recorder.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <thread>

namespace orv::simulated {

using objects::Argument;
using objects::Ledger;
using objects::Member;

namespace {

using Lock = std::unique_lock<std::mutex>;

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

// The identity of an entry: which call, after which beginning, and whether it has a number.
UINT64 EntryNumber(UINT32 generation, UINT64 call, bool hasValue) {
    return UINT64{generation} << 40 | (call & ((UINT64{1} << 39) - 1)) << 1 | (hasValue ? 1 : 0);
}

}  // namespace

CallRecorder::CallRecorder()
    : ledger(new Ledger),
      // Zeroed by the system when it is first touched, and never freed.
      entries(static_cast<Entry*>(std::calloc(Remembered, sizeof(Entry)))) {
    if (entries == nullptr) {
        throw std::bad_alloc();
    }
    ledgers.push_back(ledger);
}

// --------------------------------------------------------------------------------------- a call

HRESULT CallRecorder::Called(Member& member, const Argument& argument) {
    if (!member.listed.load(std::memory_order_acquire)) {
        List(member);
    }
    member.calls.fetch_add(1);
    const UINT64 call = calls.fetch_add(1) + 1;
    Remember(call, member, argument);
    if (awaiting.load() != 0) {
        const Lock lock(mutex);
        changed.notify_all();
    }
    return attention.load() == 0 ? S_OK : Attend(member, call);
}

void CallRecorder::Remember(UINT64 call, const Member& member, const Argument& argument) {
    Entry& entry = entries[call % Remembered];
    entry.number.store(0, std::memory_order_relaxed);
    // Released one by one, so that whoever sees one of them sees that the entry is in the making.
    entry.member.store(&member, std::memory_order_release);
    entry.text.store(argument.text, std::memory_order_release);
    entry.value.store(argument.number, std::memory_order_release);
    entry.number.store(EntryNumber(generation.load(std::memory_order_relaxed), call,
                                   argument.present && argument.text == nullptr),
                       std::memory_order_release);
}

HRESULT CallRecorder::Attend(Member& member, UINT64 call) {
    if (member.hangs.load()) {
        Lock lock(mutex);
        changed.wait(lock, [&] { return !member.hangs.load(); });
    }
    if (failingCall.load() == call) {
        return failingCode.load();
    }
    return member.failure.load();
}

void CallRecorder::List(Member& member) {
    const Lock lock(mutex);
    if (!member.listed.load()) {
        member.next = members;
        members = &member;
        Apply(member);
        member.listed.store(true, std::memory_order_release);
    }
}

HRESULT CallRecorder::UnexpectedlyCalled(const char* owner, const char* name) {
    Member& member = MemberForName(owner, name);
    {
        const Lock lock(mutex);
        unexpected.push_back(&member);
    }
    const HRESULT arrangedAnswer = Called(member, Argument());
    return arrangedAnswer == S_OK ? E_NOTIMPL : arrangedAnswer;
}

Member& CallRecorder::MemberForName(const char* owner, const char* name) {
    {
        const Lock lock(mutex);
        for (Member* member = members; member != nullptr; member = member->next) {
            if (member->owner != nullptr && std::strcmp(member->owner, owner) == 0 &&
                std::strcmp(member->name, name) == 0) {
                return *member;
            }
        }
    }
    // Members without a variable of their own are rare, and live for ever like the others.
    auto* const made = new Member(owner, name);
    List(*made);
    return *made;
}

// ------------------------------------------------------------------------------------ arranging

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
    for (Member* member = members; member != nullptr; member = member->next) {
        Apply(*member);
    }
    if (arranged.empty()) {
        attention.fetch_and(~UINT32{MembersArranged});
    }
    changed.notify_all();
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
    for (Member* member = members; member != nullptr; member = member->next) {
        Apply(*member);
    }
    changed.notify_all();
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
    for (Member* member = members; member != nullptr; member = member->next) {
        member->calls.store(0);
    }
    unexpected.clear();
    improperHandlers.store(0);
    generation.fetch_add(1);
    calls.store(0);
    changed.notify_all();
}

// -------------------------------------------------------------------------------------- reading

UINT64 CallRecorder::CallCount(const char* name) {
    if (name == nullptr) {
        return calls.load();
    }
    const Lock lock(mutex);
    UINT64 count = 0;
    for (const Member* member = members; member != nullptr; member = member->next) {
        count += IsNamed(*member, name) ? member->calls.load() : 0;
    }
    return count;
}

bool CallRecorder::AwaitCalls(const char* name, UINT64 count) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    awaiting.fetch_add(1);
    bool reached = false;
    while (!(reached = CallCount(name) >= count) && std::chrono::steady_clock::now() < end) {
        Lock lock(mutex);
        // Short, because a call may come between the look and the sleep.
        changed.wait_for(lock, std::chrono::milliseconds(2));
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
