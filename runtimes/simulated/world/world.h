// The simulated world: its state, its answers, and the events that it sends.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "runtimes/simulated/world/answer.h"
#include "runtimes/simulated/world/call_recorder.h"
#include "runtimes/simulated/world/clock.h"
#include "runtimes/simulated/world/records.h"

namespace orv::simulated {

// The world is never destroyed, because threads and the library use it until the process ends.
class World {
  public:
    // The first call creates the default world.
    static World& Get();

    // The part of the world that a reset replaces.
    struct State {
        bool adapter = false;
        std::vector<RadioRecord> radios;
        // Number of radios when the library first requested them. Later lists never contain more.
        std::optional<std::size_t> radiosListed;
        bool canScan = true;
        std::map<UINT64, Device> devices;
        std::map<std::pair<UINT64, INT32>, Answer> answers;
        std::vector<std::shared_ptr<PacketListener>> watchers;
        std::string activationLibrary;

        bool SomeRadioOn() const;
        INT32 refusedWaits = 0;
        HRESULT waitRefusal = S_OK;
    };

    // Resets the world. Returns false, without a reset, on a thread of the world, or if
    // pending answers and events make no progress for 30 s.
    bool Begin(bool simulatedTime);
    void ArrangeDefault();

    Device Find(UINT64 address) const REQUIRES(worldMutex);
    // Adds a device with the device family's service. Returns null if the address is 0 or in use.
    Device Add(UINT64 address) REQUIRES(worldMutex);
    const Answer& AnswerOf(UINT64 address, INT32 operation) const REQUIRES(worldMutex);

    // Send a packet to the watcher, or a value to the notification handler, with this index; -1
    // selects all. Both return the number of receivers, or -1 if the index does not exist.
    INT32 Advertise(DeviceRecord& device, INT32 packet, INT32 watcher) REQUIRES(worldMutex);
    INT32 Notify(DeviceRecord& device, const std::vector<BYTE>& value, INT32 registration)
        REQUIRES(worldMutex);
    // Like Advertise, but sends a packet that the caller provides.
    INT32 Send(DeviceRecord& device, const SharedPacket& packet, INT32 watcher)
        REQUIRES(worldMutex);
    void NotifyOpenLinks(DeviceRecord& device, const std::vector<BYTE>& value) REQUIRES(worldMutex);

    // Returns false if the radio does not exist. When the last Bluetooth radio is switched off, all
    // scans stop. New scans can start when a radio is on again.
    bool SwitchRadio(std::size_t index, RadioState radioState) REQUIRES(worldMutex);

    // Schedules the next packets if the device has an advertising interval and a watcher runs.
    void StartAdvertising(const Device& device) REQUIRES(worldMutex);
    void WakeAdvertisers() REQUIRES(worldMutex);
    // Processes a block that was written to the device. Returns the time until the device
    // acknowledges the write.
    Duration Receive(const Device& device, const std::vector<BYTE>& block) REQUIRES(worldMutex);
    // Adds a notification handler. The device's first handler also schedules the events whose time
    // counts from its first link. Does nothing for a device that a reset has removed.
    void AddRegistration(DeviceRecord& device, Registration registration) REQUIRES(worldMutex);
    // Returns the answer to an operation that starts now. A device that a reset has removed never
    // answers.
    Answer AnswerOfDevice(const Device& device, INT32 operation) REQUIRES(worldMutex);

    Clock clock;
    CallRecorder calls;
    std::atomic<bool> factoriesAgile{true};
    State state GUARDED_BY(worldMutex);

  private:
    World();

    bool SomeWatcherStarted() const REQUIRES(worldMutex);
    template <typename Chosen>
    void NotifySome(DeviceRecord& device, const std::vector<BYTE>& value, Chosen chosen)
        REQUIRES(worldMutex);
    void Post(const Registration& registration,
              const std::shared_ptr<const std::vector<BYTE>>& value) REQUIRES(worldMutex);
};

// How long the system tries to reach a device that is out of range.
constexpr Duration AbsenceLimit = std::chrono::seconds(7);

constexpr GUID LinkServiceUuid = Guid("4880c12c-fdcb-4077-8920-a450d7f9b907");
constexpr GUID LinkCharacteristicUuid = Guid("fec26ec4-6d71-4442-9f81-55bc21d658d6");

}  // namespace orv::simulated
