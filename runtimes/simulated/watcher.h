// A watcher of advertisements.
#pragma once

#include "runtimes/objects/event.h"
#include "runtimes/simulated/advertisement.h"

namespace orv::simulated {

using ReceivedHandler =
    TypedEventHandler<BluetoothLEAdvertisementWatcher, BluetoothLEAdvertisementReceivedEventArgs>;

// The world keeps every watcher until it begins anew, for events that come late.
class SimulatedBluetoothLEAdvertisementWatcher final
    : public objects::Object<objects::Stub<IBluetoothLEAdvertisementWatcher>> {
  public:
    SimulatedBluetoothLEAdvertisementWatcher();

    // The work of the default construction.
    static HRESULT Activate(IInspectable** instance);

    // All four need the world's mutex.
    bool IsStarted(Guard&) const { return started; }
    bool Accepts(Guard&, const Packet& packet) const;
    void Deliver(Guard& guard, const SharedPacket& packet);
    // Stops by itself.
    void Abort(Guard&) { started = false; }

    // Lets go of its handlers; the mutex must not be held.
    void Forget();

    HRESULT put_ScanningMode(BluetoothLEScanningMode value) override;
    HRESULT Start() override;
    HRESULT Stop() override;
    HRESULT add_Received(ReceivedHandler* handler, EventRegistrationToken* token) override;

  private:
    // Guarded by the world's mutex.
    bool started = false;
    BluetoothLEScanningMode mode = BluetoothLEScanningMode::Passive;
    objects::Event<ReceivedHandler> received;
    std::map<UINT64, std::shared_ptr<Strand>> strands;  // by device
};

}  // namespace orv::simulated
