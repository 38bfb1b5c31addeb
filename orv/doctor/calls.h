// Calls the library and keeps each result and duration, for comparison with the log and the
// documented limits.
#pragma once

#include <chrono>
#include <list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "orv/doctor/surroundings.h"
#include "orv/library/library.h"
#include "orv/log/read/entry.h"
#include "orv/mutex.h"

namespace orv::doctor {

struct MadeCall {
    log::Subject subject;
    ResultCode result;
    std::int64_t ms;
    bool alone;  // no other call can hold the lock that this call needs
};

// All functions are thread-safe.
class Calls {
  public:
    Calls(Library& library, const Surroundings& surroundings);

    MadeCall Available();
    MadeCall Initialize();
    void Deinitialize(std::int32_t scanner);
    MadeCall Start(std::int32_t scanner);
    void Stop(std::int32_t scanner);
    std::vector<DiscoveredDevice> Devices(std::int32_t scanner);
    MadeCall Connect(BluetoothAddress address);
    MadeCall Disconnect(BluetoothAddress address, bool alone = true);
    MadeCall Send(BluetoothAddress address, std::string_view block, bool alone = true);
    std::string Receive(BluetoothAddress address);
    MadeCall Flush(BluetoothAddress address);

    std::vector<MadeCall> Made() const;
    // Returns the oldest pending call that began before `latest` and is not in `ignored`.
    std::optional<log::Function> Pending(std::chrono::steady_clock::time_point latest,
                                         std::span<const log::Function> ignored) const;
    // Blocks all pending and later calls forever, so that their threads cannot change findings.
    void Abandon();

  private:
    struct PendingCall {
        log::Function function;
        std::chrono::steady_clock::time_point begin;
    };

    std::list<PendingCall>::iterator Enter(log::Function function);
    template <typename Body>
    MadeCall Make(const log::Subject& subject, Body&& body, bool alone = true);

    Library& library;
    const Surroundings& surroundings;
    mutable Mutex mutex;
    std::vector<MadeCall> made GUARDED_BY(mutex);
    std::list<PendingCall> pending GUARDED_BY(mutex);
    bool isAbandoned GUARDED_BY(mutex) = false;
    Condition never;
};

}  // namespace orv::doctor
