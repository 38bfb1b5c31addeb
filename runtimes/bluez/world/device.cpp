#include "runtimes/bluez/world/device.h"

#include "runtimes/bluez/world/kernel_event.h"
#include "runtimes/bluez/world/promise.h"

namespace orv::bluez {

namespace {

constexpr milliseconds TellLimit{500};

}  // namespace

BluezBluetoothLEDevice::BluezBluetoothLEDevice(UINT64 addressOfDevice) : address(addressOfDevice) {
    Daemon::Get().links.AddUser(address);
}

BluezBluetoothLEDevice::~BluezBluetoothLEDevice() {
    Contained([this] { Shut(); });
}

HRESULT BluezBluetoothLEDevice::FromBluetoothAddressAsync(
    UINT64 address, IAsyncOperation<BluetoothLEDevice>** operation) {
    using Found = Ref<BluezBluetoothLEDevice>;
    return StartOperation<BluetoothLEDevice, Found>(operation, [address](const auto& promise) {
        Daemon::Get().links.Find(address, [address, promise](const Path& device) {
            promise->Complete(device.empty() ? Found() : Make<BluezBluetoothLEDevice>(address));
        });
    });
}

// Waits until the disconnect is requested, but not for the end of the link. Without a request, the
// daemon would keep the link when the host's process ends.
void BluezBluetoothLEDevice::Shut() {
    if (closed.exchange(true, std::memory_order_acq_rel)) {
        return;
    }
    Loop& loop = Daemon::Get().loop;
    if (loop.IsOwnThread()) {
        loop.Attempt([this] { Daemon::Get().links.RemoveUser(address); });  // Post needs memory
        return;
    }
    const auto told = std::make_shared<KernelEvent>();
    loop.Post([address = address, told] {
        Daemon::Get().links.RemoveUser(address);
        told->Set();
    });
    told->Wait(TellLimit);
}

}  // namespace orv::bluez
