// A watcher of advertisements.
#pragma once

#include <map>

#include "runtimes/objects/event.h"
#include "runtimes/simulated/world/advertisement.h"

namespace orv::simulated {

using ReceivedHandler =
    TypedEventHandler<BluetoothLEAdvertisementWatcher, BluetoothLEAdvertisementReceivedEventArgs>;

// The world keeps each watcher until a reset, because packets may arrive after the library has
// released the watcher.
class SimulatedBluetoothLEAdvertisementWatcher final
    : public objects::Object<objects::Stub<IBluetoothLEAdvertisementWatcher>>,
      public PacketListener {
  public:
    SimulatedBluetoothLEAdvertisementWatcher();

    // Creates a watcher, as the default constructor of the runtime class does.
    static HRESULT Activate(IInspectable** instance);

    bool IsStarted() const REQUIRES(worldMutex) override { return started; }
    bool Accepts(const Packet& packet) const REQUIRES(worldMutex) override;
    void Deliver(const SharedPacket& packet) REQUIRES(worldMutex) override;
    void Abort() REQUIRES(worldMutex) override { started = false; }
    void Forget() override;

    HRESULT put_ScanningMode(BluetoothLEScanningMode value) override;
    HRESULT Start() override;
    HRESULT Stop() override;
    HRESULT add_Received(ReceivedHandler* handler, EventRegistrationToken* token) override;

  private:
    bool started GUARDED_BY(worldMutex) = false;
    BluetoothLEScanningMode mode GUARDED_BY(worldMutex) = BluetoothLEScanningMode::Passive;
    objects::Event<ReceivedHandler> received GUARDED_BY(worldMutex);
    // One strand for each device address.
    std::map<UINT64, std::shared_ptr<Strand>> strands GUARDED_BY(worldMutex);
};

}  // namespace orv::simulated
