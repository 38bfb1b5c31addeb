#pragma once

#include "platform/abi/foundation.h"
#include "runtimes/objects/observer.h"

namespace orv::objects {

template <>
struct Stub<IAsyncInfo> : IAsyncInfo {
    HRESULT get_Id(UINT32*) override { return Unexpected("IAsyncInfo", "get_Id"); }
    HRESULT get_Status(AsyncStatus*) override { return Unexpected("IAsyncInfo", "get_Status"); }
    HRESULT get_ErrorCode(HRESULT*) override { return Unexpected("IAsyncInfo", "get_ErrorCode"); }
    HRESULT Cancel() override { return Unexpected("IAsyncInfo", "Cancel"); }
    HRESULT Close() override { return Unexpected("IAsyncInfo", "Close"); }
};

}  // namespace orv::objects
