// Windows.Devices.Radios.
#pragma once

#include "platform/abi/foundation.h"

namespace orv {

enum class RadioAccessStatus : INT32;
enum class RadioKind : INT32 { Other = 0, WiFi = 1, MobileBroadband = 2, Bluetooth = 3, FM = 4 };
enum class RadioState : INT32 { Unknown = 0, On = 1, Off = 2, Disabled = 3 };

struct Radio;

struct IRadio : IInspectable {
    static constexpr GUID Iid = Guid("252118df-b33e-416a-875f-1cf38ae2d83e");
    virtual HRESULT SetStateAsync(RadioState value,
                                  IAsyncOperation<RadioAccessStatus>** operation) = 0;
    virtual HRESULT add_StateChanged(TypedEventHandler<Radio, IInspectable>* handler,
                                     EventRegistrationToken* token) = 0;
    virtual HRESULT remove_StateChanged(EventRegistrationToken token) = 0;
    virtual HRESULT get_State(RadioState* value) = 0;
    virtual HRESULT get_Name(HSTRING* value) = 0;
    virtual HRESULT get_Kind(RadioKind* value) = 0;
};

struct Radio {
    static constexpr char16_t Name[] = u"Windows.Devices.Radios.Radio";
    using DefaultInterface = IRadio;
};

struct IRadioStatics : IInspectable {
    static constexpr GUID Iid = Guid("5fb6a12e-67cb-46ae-aae9-65919f86eff4");
    virtual HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation) = 0;
    virtual HRESULT GetDeviceSelector(HSTRING* selector) = 0;
    virtual HRESULT FromIdAsync(HSTRING deviceId, IAsyncOperation<Radio>** operation) = 0;
    virtual HRESULT RequestAccessAsync(IAsyncOperation<RadioAccessStatus>** operation) = 0;
};

template <>
inline constexpr GUID IidOf<IAsyncOperation<IVectorView<Radio>>> =
    Guid("040b54a1-203e-58f5-943f-c1cca86bd532");
template <>
inline constexpr GUID IidOf<AsyncOperationCompletedHandler<IVectorView<Radio>>> =
    Guid("d30691e6-60a0-59c9-8965-5bbe282e8208");
template <>
inline constexpr GUID IidOf<IVectorView<Radio>> = Guid("65066c36-090b-5466-b8e5-e7565dc34175");

}  // namespace orv
