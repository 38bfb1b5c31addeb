#pragma once

#include <map>

#include "runtimes/objects/watcher.h"
#include "runtimes/simulated/world/records.h"

namespace orv::simulated {

// The world keeps each watcher until a reset, because packets may arrive after the library has
// released the watcher.
class SimulatedBluetoothLEAdvertisementWatcher final : public objects::WatcherObject,
                                                       public PacketListener {
  public:
    static HRESULT Activate(IInspectable** instance);

    bool IsStarted() const REQUIRES(worldMutex) override { return started; }
    bool Accepts(const Packet& packet) const REQUIRES(worldMutex) override;
    void Deliver(const SharedPacket& packet) REQUIRES(worldMutex) override;
    void Abort() REQUIRES(worldMutex) override { started = false; }
    void Forget() override;

  private:
    void SetMode(BluetoothLEScanningMode value) override;
    void Switch(bool on) override;
    EventRegistrationToken AddHandler(
        objects::SharedHandler<objects::ReceivedHandler> handler) override;

    bool started GUARDED_BY(worldMutex) = false;
    BluetoothLEScanningMode mode GUARDED_BY(worldMutex) = BluetoothLEScanningMode::Passive;
    objects::Event<objects::ReceivedHandler> received GUARDED_BY(worldMutex);
    // One strand for each device address keeps its packets in order.
    std::map<UINT64, std::shared_ptr<Strand>> strands GUARDED_BY(worldMutex);
};

}  // namespace orv::simulated
