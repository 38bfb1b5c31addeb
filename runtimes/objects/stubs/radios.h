#pragma once

#include "platform/abi/radios.h"
#include "runtimes/objects/observer.h"

namespace orv::objects {

template <>
struct Stub<IRadio> : IRadio {
    HRESULT SetStateAsync(RadioState, IAsyncOperation<RadioAccessStatus>**) override {
        return Unexpected("Radio", "SetStateAsync");
    }
    HRESULT add_StateChanged(TypedEventHandler<Radio, IInspectable>*,
                             EventRegistrationToken*) override {
        return Unexpected("Radio", "add_StateChanged");
    }
    HRESULT remove_StateChanged(EventRegistrationToken) override {
        return Unexpected("Radio", "remove_StateChanged");
    }
    HRESULT get_State(RadioState*) override { return Unexpected("Radio", "get_State"); }
    HRESULT get_Name(HSTRING*) override { return Unexpected("Radio", "get_Name"); }
    HRESULT get_Kind(RadioKind*) override { return Unexpected("Radio", "get_Kind"); }
};

template <>
struct Stub<IRadioStatics> : IRadioStatics {
    HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>**) override {
        return Unexpected("Radio", "GetRadiosAsync");
    }
    HRESULT GetDeviceSelector(HSTRING*) override {
        return Unexpected("Radio", "GetDeviceSelector");
    }
    HRESULT FromIdAsync(HSTRING, IAsyncOperation<Radio>**) override {
        return Unexpected("Radio", "FromIdAsync");
    }
    HRESULT RequestAccessAsync(IAsyncOperation<RadioAccessStatus>**) override {
        return Unexpected("Radio", "RequestAccessAsync");
    }
};

}  // namespace orv::objects
