#include "runtimes/objects/handler.h"

namespace orv::objects {

namespace {

bool Answers(IUnknown* handler, const GUID& iid) {
    void* found = nullptr;
    if (Failed(handler->QueryInterface(&iid, &found)) || found == nullptr) {
        return false;
    }
    static_cast<IUnknown*>(found)->Release();
    return true;
}

}  // namespace

bool IsProperHandler(IUnknown* handler, const GUID& ownIid) noexcept {
    return Answers(handler, ownIid) && Answers(handler, IAgileObject::Iid) &&
           Answers(handler, IMarshal::Iid);
}

}  // namespace orv::objects
