// What the library calls: counted, remembered, and made to fail or hang as arranged.
#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "runtimes/objects/observer.h"

namespace orv::simulated {

// A call with nothing arranged costs a few atomic steps and no lock: benchmarks run over it.
// No function may be called with the world's mutex held.
class CallRecorder final : public objects::Observer {
  public:
    CallRecorder();

    HRESULT Called(objects::Member& member, const objects::Argument& argument) override;
    HRESULT UnexpectedlyCalled(const char* owner, const char* name) override;
    void ImproperHandler() override { improperHandlers.fetch_add(1, std::memory_order_relaxed); }
    objects::Ledger* CurrentLedger() override { return ledger.load(std::memory_order_acquire); }

    // Lets everything go on that hangs, and arranges nothing more.
    void ReleaseAll();
    // All counts begin anew. What is held across the border since before is no longer counted.
    void Begin();

    // `name` as in the world's header; null: all together.
    UINT64 CallCount(const char* name);
    bool AwaitCalls(const char* name, UINT64 count);
    // The text of call number `index`; false when there is none or it is too long ago.
    bool CallAt(UINT64 index, std::string& text);
    std::size_t UnexpectedCallCount();
    bool UnexpectedCallAt(std::size_t index, std::string& text);
    UINT32 ImproperHandlers() const { return improperHandlers.load(std::memory_order_acquire); }

    // The same text, living for ever: an argument that can be remembered.
    const char* Text(const std::string& text);

    // Returns how many calls of the previous plan were left.
    UINT64 FailCall(UINT64 n, HRESULT code);
    void FailMember(const char* name, HRESULT code);
    void Hang(const char* name, bool hang);

  private:
    // One remembered call. `number` says which, so that a reader notices an entry in the making.
    struct Entry {
        std::atomic<UINT64> number;
        std::atomic<const objects::Member*> member;
        std::atomic<const char*> text;
        std::atomic<UINT64> value;  // with its presence in `number`
    };
    struct Arranged {
        HRESULT failure = S_OK;
        bool hangs = false;
    };
    enum Attention : UINT32 { PlanArranged = 1, MembersArranged = 2 };

    void Remember(UINT64 call, const objects::Member& member, const objects::Argument& argument);
    HRESULT Attend(objects::Member& member, UINT64 call);
    void List(objects::Member& member);
    void Apply(objects::Member& member);
    void Arrange(const char* name, Arranged how);
    Arranged CurrentlyArranged(const char* name);
    objects::Member& MemberForName(const char* owner, const char* name);

    static constexpr UINT64 Remembered = UINT64{1} << 17;

    std::atomic<UINT64> calls{0};       // since Begin
    std::atomic<UINT32> generation{0};  // of Begin
    std::atomic<UINT32> attention{0};
    std::atomic<UINT32> awaiting{0};
    std::atomic<UINT64> failingCall{0};  // counted from 1; 0: none
    std::atomic<HRESULT> failingCode{S_OK};
    std::atomic<UINT32> improperHandlers{0};
    std::atomic<objects::Ledger*> ledger;
    Entry* const entries;

    std::mutex mutex;
    std::condition_variable changed;
    // Guarded by the mutex.
    objects::Member* members = nullptr;
    std::map<std::string, Arranged> arranged;
    std::vector<const objects::Member*> unexpected;
    std::vector<objects::Ledger*> ledgers;
    std::set<std::string> texts;
};

}  // namespace orv::simulated
