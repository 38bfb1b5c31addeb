// The simulated world: what exists, how it answers, and what has reached it.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/abi/bluetooth.h"
#include "runtimes/objects/event.h"
#include "runtimes/objects/object.h"
#include "runtimes/simulated/answer.h"
#include "runtimes/simulated/call_recorder.h"
#include "runtimes/simulated/clock.h"

namespace orv::simulated {

class SimulatedBluetoothLEAdvertisementWatcher;
class SimulatedGattCharacteristic;
struct Packet;
struct Registration;

struct RadioRecord {
    RadioKind kind;
    RadioState state;
};

struct Section {
    BYTE type;
    std::vector<BYTE> data;
};

// One of a device's two packets, as it is configured.
struct PacketRecord {
    std::optional<std::u16string> name;
    std::vector<Section> sections;
};

struct ServiceRecord {
    GUID uuid;
    std::vector<GUID> characteristics;
};

// Something that will happen to a device, `delay` after its first link begins to open.
struct Recorded {
    Duration delay;
    Clock::Action action;
};

struct Echo {
    bool on = false;
    Duration interval{0};
    Duration lastSent{0};  // the moment of the latest notification that is on its way or was sent
};

// A device as the world knows it. Guarded by the world's mutex except where noted.
struct DeviceRecord {
    explicit DeviceRecord(UINT64 addressOfDevice);
    ~DeviceRecord();

    const UINT64 address;
    bool known = true;            // the system finds it by its address
    bool knownOnceHeard = false;  // it will be, once a watcher has heard it
    bool present = true;  // what asks an absent device ends after AbsenceLimit; it sends nothing
    bool oneAtATime = false;  // an operation begins when the one before it has ended
    Duration busyUntil{0};    // the end of the last one that has begun then
    std::optional<std::size_t> largestWrite;
    bool exists = true;  // false once the world has begun anew: nothing happens to it any more
    INT16 signal = -60;
    INT16 signalSpread = 0;  // the signal varies by this much to either side
    UINT32 packetsSent = 0;
    PacketRecord packets[2];
    std::vector<ServiceRecord> services;
    Echo echo;
    Duration advertisingInterval{0};
    bool advertises = false;      // its next packets are due some time
    UINT32 advertisingRound = 0;  // of the timer that counts; earlier ones do nothing any more
    std::vector<Registration> registrations;
    std::vector<Recorded> recording;  // empty once its first link has begun to open
    std::vector<std::vector<BYTE>> writes;
    std::atomic<INT32> openObjects{0};  // devices and services; needs no lock
};
using Device = std::shared_ptr<DeviceRecord>;

// Never destroyed, because its threads and its objects may be in use until the process is gone.
class World {
  public:
    // The world, which begins as the default one at the first use.
    static World& Get();

    // Everything that a new beginning forgets. Guarded by the mutex.
    struct State {
        State();
        State(State&&) noexcept;
        State& operator=(State&&) noexcept;
        ~State();

        bool adapter = false;
        std::vector<RadioRecord> radios;
        bool canScan = true;
        std::map<UINT64, Device> devices;
        std::map<std::pair<UINT64, INT32>, Answer> answers;
        std::vector<objects::Ref<SimulatedBluetoothLEAdvertisementWatcher>> watchers;
        std::string activationLibrary;

        bool SomeRadioOn() const;
        INT32 refusedWaits = 0;
        HRESULT waitRefusal = S_OK;
    };

    // False when a thread of the world called it: then nothing has happened.
    bool Begin(bool simulatedTime);
    void ArrangeDefault();

    Device Find(Guard&, UINT64 address) const;
    // Adds a device with the family's service; null when there is one of this address.
    Device Add(Guard&, UINT64 address);
    const Answer& AnswerOf(Guard&, UINT64 address, INT32 operation) const;

    // Both give the number of watchers or handlers that it goes to; -1: no such one.
    INT32 Advertise(Guard& guard, DeviceRecord& device, INT32 packet, INT32 watcher);
    INT32 Notify(Guard& guard, DeviceRecord& device, const std::vector<BYTE>& value,
                 INT32 registration);
    // The same for a packet that is not the device's own, and for the handlers of open links.
    INT32 Send(Guard& guard, DeviceRecord& device, const std::shared_ptr<const Packet>& packet,
               INT32 watcher);
    void NotifyOpenLinks(Guard& guard, DeviceRecord& device, const std::vector<BYTE>& value);

    // False: there is no such radio. Scans stop when it was the last Bluetooth radio that was on,
    // and can be started again when one is on again.
    bool SwitchRadio(Guard& guard, std::size_t index, RadioState radioState);

    // Begins to send on the device's new interval, if it has one and a watcher is started.
    void StartAdvertising(Guard& guard, const Device& device);
    // A watcher has started: devices that do not send already begin to.
    void WakeAdvertisers(Guard& guard);
    // The device has received a block. The time until the write is acknowledged.
    Duration Receive(Guard& guard, const Device& device, const std::vector<BYTE>& block);

    std::mutex mutex;
    Clock clock{mutex};
    CallRecorder calls;
    std::atomic<bool> factoriesAgile{true};
    State state;

  private:
    World();

    bool SomeWatcherStarted(Guard& guard) const;
    template <typename Condition>
    void NotifySome(Guard& guard, DeviceRecord& device, const std::vector<BYTE>& value,
                    Condition condition);
    void Post(Guard& guard, const Registration& registration,
              const std::shared_ptr<const std::vector<BYTE>>& value);
};

// How long the system tries to reach a device that is not there.
constexpr Duration AbsenceLimit = std::chrono::seconds(7);

// The service and the characteristic of the family's devices.
constexpr GUID LinkServiceUuid = Guid("4880c12c-fdcb-4077-8920-a450d7f9b907");
constexpr GUID LinkCharacteristicUuid = Guid("fec26ec4-6d71-4442-9f81-55bc21d658d6");

}  // namespace orv::simulated
