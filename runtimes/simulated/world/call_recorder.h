// Counts and records the library's calls, and makes them fail or hang as configured.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "runtimes/objects/mutex.h"
#include "runtimes/objects/observer.h"

namespace orv::simulated {

// If no fault is configured, recording a call takes a few atomic operations and no lock, because
// benchmarks include this time. Do not call any function while holding the world's mutex.
class CallRecorder final : public objects::CallObserver {
  public:
    CallRecorder();

    HRESULT Called(objects::Member& member, const objects::Argument& argument) override;
    HRESULT UnexpectedlyCalled(const char* owner, const char* name) override;
    void ImproperHandler() override { improperHandlers.fetch_add(1, std::memory_order_relaxed); }
    objects::Ledger* CurrentLedger() override { return ledger.load(std::memory_order_acquire); }

    // Releases all hanging calls and removes all configured faults.
    void ReleaseAll();
    // Sets all counts to 0. Later counts exclude objects and handlers that already exist.
    void Begin();

    // Counts the calls of the member `Class.Name`, or all calls if `name` is null.
    UINT64 CallCount(const char* name);
    bool AwaitCalls(const char* name, UINT64 count);
    // Stores the call with this index in `text`. Returns false if the call is not recorded.
    bool CallAt(UINT64 index, std::string& text);
    std::size_t UnexpectedCallCount();
    bool UnexpectedCallAt(std::size_t index, std::string& text);
    UINT32 ImproperHandlers() const { return improperHandlers.load(std::memory_order_acquire); }

    // Copies the text of a recorded argument. The copy is never freed.
    const char* Text(const std::string& text);

    static bool HasMember(const char* name);
    // Makes the n-th call from now fail, or removes the fault if `n` is 0. Returns how many calls
    // were left until the previously set fault.
    UINT64 FailCall(UINT64 n, HRESULT code);
    void FailMember(const char* name, HRESULT code);
    void Hang(const char* name, bool hang);

  private:
    // One recorded call. `number` is 0 while the entry is written, so that a reader can skip it.
    struct Entry {
        std::atomic<UINT64> number;
        std::atomic<const objects::Member*> member;
        std::atomic<const char*> text;
        std::atomic<UINT64> value;  // valid if the lowest bit of `number` is 1
    };
    struct Arranged {
        HRESULT failure = S_OK;
        bool hangs = false;
    };
    enum Attention : UINT32 { PlanArranged = 1, MembersArranged = 2 };

    void Remember(UINT64 call, const objects::Member& member, const objects::Argument& argument);
    HRESULT Attend(objects::Member& member, UINT64 call);
    void Apply(objects::Member& member) REQUIRES(mutex);
    void Arrange(const char* name, Arranged how) REQUIRES(mutex);
    Arranged CurrentlyArranged(const char* name) REQUIRES(mutex);
    objects::Member& MemberForName(const char* owner, const char* name) REQUIRES(mutex);

    static constexpr UINT64 Remembered = UINT64{1} << 17;

    std::atomic<UINT64> calls{0};       // number of calls since the last reset
    std::atomic<UINT32> generation{0};  // number of resets
    std::atomic<UINT32> attention{0};
    std::atomic<UINT32> awaiting{0};
    std::atomic<UINT64> failingCall{0};  // number of the call, from 1; 0 if no call fails
    std::atomic<HRESULT> failingCode{S_OK};
    std::atomic<UINT32> improperHandlers{0};
    std::atomic<objects::Ledger*> ledger;
    Entry* const entries;

    objects::Mutex mutex;
    objects::Condition changed;
    std::map<std::string, Arranged> arranged GUARDED_BY(mutex);
    std::vector<const objects::Member*> unexpected GUARDED_BY(mutex);
    std::vector<objects::Ledger*> ledgers GUARDED_BY(mutex);
    std::set<std::string> texts GUARDED_BY(mutex);
};

}  // namespace orv::simulated
