#pragma once

#include "platform/abi/foundation.h"

namespace orv {

enum class RadioAccessStatus : INT32 {
    Unspecified = 0,
    Allowed = 1,
    DeniedByUser = 2,
    DeniedBySystem = 3
};
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
inline constexpr GUID IidOf<IAsyncOperation<RadioAccessStatus>> =
    Guid("21fb30ef-072f-502c-9898-d0c3b2cd9ac5");
template <>
inline constexpr GUID IidOf<AsyncOperationCompletedHandler<RadioAccessStatus>> =
    Guid("bd248e73-f05f-574c-ae3d-9b95c4bf282a");
template <>
inline constexpr GUID IidOf<IAsyncOperation<IVectorView<Radio>>> =
    Guid("040b54a1-203e-58f5-943f-c1cca86bd532");
template <>
inline constexpr GUID IidOf<AsyncOperationCompletedHandler<IVectorView<Radio>>> =
    Guid("d30691e6-60a0-59c9-8965-5bbe282e8208");
template <>
inline constexpr GUID IidOf<IVectorView<Radio>> = Guid("65066c36-090b-5466-b8e5-e7565dc34175");
template <>
inline constexpr GUID IidOf<IIterable<Radio>> = Guid("e82500af-1f53-504e-b8be-dac4fbb69084");
template <>
inline constexpr GUID IidOf<IIterator<Radio>> = Guid("cf37ede7-eaec-5b8f-ad31-4d51abd9db05");

}  // namespace orv
