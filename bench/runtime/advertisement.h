#pragma once

#include "bench/runtime/device.h"
#include "runtimes/objects/stubs/advertisement.h"

namespace orv::bench {

class Watcher final : public Bare<Stub<IBluetoothLEAdvertisementWatcher>> {
  public:
    HRESULT put_ScanningMode(BluetoothLEScanningMode) override { return S_OK; }
    HRESULT Start() override { return S_OK; }
    HRESULT Stop() override { return S_OK; }
    // Ignores the handler, because benchmarks call the library's callback themselves.
    HRESULT add_Received(TypedEventHandler<BluetoothLEAdvertisementWatcher,
                                           BluetoothLEAdvertisementReceivedEventArgs>*,
                         EventRegistrationToken* token) override {
        token->value = 1;
        return S_OK;
    }
};

// An advertisement that has a name and no data sections.
class Advertisement final : public Bare<Stub<IBluetoothLEAdvertisement>> {
  public:
    explicit Advertisement(const char16_t* ownName) : name(ownName) {}

    HRESULT get_LocalName(HSTRING* value) override;

  private:
    const char16_t* const name;
};

// The arguments of an advertisement event. Can be delivered repeatedly; `address` can be changed.
class Heard final : public Bare<Stub<IBluetoothLEAdvertisementReceivedEventArgs>,
                                Stub<IBluetoothLEAdvertisementReceivedEventArgs2>> {
  public:
    Heard(UINT64 from, const char16_t* name) : address(from), advertisement(name) {}

    HRESULT get_RawSignalStrengthInDBm(INT16* value) override {
        *value = -60;
        return S_OK;
    }
    HRESULT get_BluetoothAddress(UINT64* value) override {
        *value = address;
        return S_OK;
    }
    HRESULT get_Advertisement(IBluetoothLEAdvertisement** value) override {
        return Share(value, &advertisement);
    }
    HRESULT get_IsScanResponse(boolean* value) override {
        *value = 0;
        return S_OK;
    }

    UINT64 address;

  private:
    Advertisement advertisement;
};

}  // namespace orv::bench
