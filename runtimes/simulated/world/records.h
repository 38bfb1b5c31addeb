#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/abi/radios.h"
#include "runtimes/objects/advertisement.h"
#include "runtimes/simulated/world/delivery_threads.h"
#include "runtimes/simulated/world/duration.h"

namespace orv::simulated {

using objects::Packet;
using objects::PacketContent;
using objects::SharedPacket;

struct RadioRecord {
    RadioKind kind;
    RadioState state;
};

struct ServiceRecord {
    GUID uuid;
    std::vector<GUID> characteristics;
};

// The world's interface to a watcher.
class PacketListener {
  public:
    virtual bool IsStarted() const REQUIRES(worldMutex) = 0;
    // Returns whether this watcher receives a packet that is sent to all: it must be started, and
    // its scanning mode must match.
    virtual bool Accepts(const Packet& packet) const REQUIRES(worldMutex) = 0;
    virtual void Deliver(const SharedPacket& packet) REQUIRES(worldMutex) = 0;
    // Stops the watcher, as the system does when the last radio is switched off.
    virtual void Abort() REQUIRES(worldMutex) = 0;
    // Stops the watcher and releases its handlers. Do not hold the world's mutex.
    virtual void Forget() = 0;

  protected:
    ~PacketListener() = default;
};

// The world's interface to a characteristic with notification handlers.
class NotificationSource {
  public:
    virtual bool IsOpen() const = 0;
    virtual bool IsNotifying() const REQUIRES(worldMutex) = 0;

  protected:
    ~NotificationSource() = default;
};

// A notification handler. It stays registered until a reset.
struct Registration {
    std::shared_ptr<const NotificationSource> source;
    // Calls the handler. Do not hold the world's mutex.
    std::function<void(const std::vector<BYTE>& value)> raise;
    std::shared_ptr<Strand> strand;
};

// An event that is due `delay` after the device's first link begins to open.
struct PendingEvent {
    Duration delay;
    std::function<void()> action;  // called with the world's mutex held
};

struct Echo {
    bool on = false;
    Duration interval{0};
    Duration lastSent{0};  // time of the last notification, sent or scheduled
};

// Whether the system finds a device by its address. OnceHeard: only after a watcher has received a
// packet of the device.
enum class Known { No, Yes, OnceHeard };

struct DeviceRecord {
    explicit DeviceRecord(UINT64 addressOfDevice) : address(addressOfDevice) {}

    // The setters return false, without effect, if a value is out of range.
    static constexpr INT32 LargestSpread = 100;
    bool SetSignal(INT32 dBm) REQUIRES(worldMutex);
    bool SetSignalSpread(INT32 dB) REQUIRES(worldMutex);
    bool SetLargestWrite(INT32 bytes) REQUIRES(worldMutex);  // -1 removes the limit
    bool SetEcho(bool on, INT32 intervalMs) REQUIRES(worldMutex);
    bool SetInterval(INT32 milliseconds) REQUIRES(worldMutex);

    const UINT64 address;
    Known known GUARDED_BY(worldMutex) = Known::Yes;
    // While false, the device sends nothing, and operations on it end after AbsenceLimit.
    bool present GUARDED_BY(worldMutex) = true;
    // If true, each operation begins after the previous operation has ended.
    bool oneAtATime GUARDED_BY(worldMutex) = false;
    Duration busyUntil GUARDED_BY(worldMutex){0};
    std::optional<std::size_t> largestWrite GUARDED_BY(worldMutex);
    // False after a reset has removed the device, which then receives no events.
    bool exists GUARDED_BY(worldMutex) = true;
    INT16 signal GUARDED_BY(worldMutex) = -60;
    INT16 signalSpread GUARDED_BY(worldMutex) = 0;  // `signal` varies by at most this many dB
    UINT32 packetsSent GUARDED_BY(worldMutex) = 0;
    PacketContent packets[2] GUARDED_BY(worldMutex);
    std::vector<ServiceRecord> services GUARDED_BY(worldMutex);
    Echo echo GUARDED_BY(worldMutex);
    Duration advertisingInterval GUARDED_BY(worldMutex){0};
    bool advertises GUARDED_BY(worldMutex) = false;  // true while its next packets are scheduled
    // Number of the latest advertising timer. Earlier timers have no effect.
    UINT32 advertisingRound GUARDED_BY(worldMutex) = 0;
    std::vector<Registration> registrations GUARDED_BY(worldMutex);
    // Empty after the device's first link has begun to open.
    std::vector<PendingEvent> pendingEvents GUARDED_BY(worldMutex);
    std::vector<std::vector<BYTE>> writes GUARDED_BY(worldMutex);
    std::atomic<INT32> openObjects{0};
};
using Device = std::shared_ptr<DeviceRecord>;

Packet PacketOf(const DeviceRecord& device, bool asScanResponse) REQUIRES(worldMutex);

}  // namespace orv::simulated
