#include "frame/export_frame.h"
#include "platform/abi/bluetooth.h"
#include "platform/activation.h"
#include "platform/wait.h"

namespace orv {

namespace {

constexpr UINT32 RadioWaitLimitMs = 2000;

bool HasAdapter() {
    const auto statics = FactoryOf<BluetoothAdapter, IBluetoothAdapterStatics>();
    const auto adapter =
        AwaitResult(Get(statics, &IBluetoothAdapterStatics::GetDefaultAsync), RadioWaitLimitMs);
    return adapter && *adapter;
}

bool HasRadioThatIsOn() {
    const auto statics = FactoryOf<Radio, IRadioStatics>();
    const auto radios = AwaitResult(Get(statics, &IRadioStatics::GetRadiosAsync), RadioWaitLimitMs);
    if (!radios || !*radios) {
        return false;
    }
    const UINT32 size = Get(*radios, &IVectorView<Radio>::get_Size);
    for (UINT32 i = 0; i < size; ++i) {
        const auto radio = Get(*radios, &IVectorView<Radio>::GetAt, i);
        if (Get(radio, &IRadio::get_Kind) == RadioKind::Bluetooth &&
            Get(radio, &IRadio::get_State) == RadioState::On) {
            return true;
        }
    }
    return false;
}

}  // namespace

}  // namespace orv

using namespace orv;

extern "C" ResultCode BluetoothAvailable(void) {
    return RunExport(Traced("BluetoothAvailable"), []() -> ResultCode {
        return HasAdapter() && HasRadioThatIsOn() ? 0 : Failure;
    });
}
