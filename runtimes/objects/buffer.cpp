#include "runtimes/objects/buffer.h"

namespace orv::objects {

namespace {

// Private interface identifier by which the runtime recognizes its own buffers. A query for it adds
// no reference and is not recorded as a call.
constexpr GUID OwnBufferIid = Guid("6f3ae1d7-0c52-4b9e-9d41-72c5b80f1a36");

Class bufferClass("IBuffer");
Member getCapacityMember(bufferClass.name, "get_Capacity");
Member getLengthMember(bufferClass.name, "get_Length");
Member bufferMember(bufferClass.name, "Buffer");

}  // namespace

MemoryBuffer::MemoryBuffer(std::vector<BYTE> bytes)
    : Object(bufferClass), content(std::move(bytes)) {}

Ref<MemoryBuffer> MemoryBuffer::From(IBuffer* buffer) {
    void* found = nullptr;
    if (!Failed(buffer->QueryInterface(&OwnBufferIid, &found))) {
        return Ref<MemoryBuffer>(static_cast<MemoryBuffer*>(found));
    }
    UINT32 length = 0;
    if (Failed(buffer->get_Length(&length)) ||
        Failed(buffer->QueryInterface(&IBufferByteAccess::Iid, &found))) {
        return Ref<MemoryBuffer>();
    }
    auto* const access = static_cast<IBufferByteAccess*>(found);
    BYTE* bytes = nullptr;
    const bool given = !Failed(access->Buffer(&bytes)) && (bytes != nullptr || length == 0);
    Ref<MemoryBuffer> copy;
    if (given) {
        copy = Make<MemoryBuffer>(std::vector<BYTE>(bytes, bytes + length));
    }
    access->Release();
    return copy;
}

HRESULT MemoryBuffer::QueryInterface(const GUID* iid, void** object) {
    if (iid != nullptr && object != nullptr && *iid == OwnBufferIid) {
        *object = this;
        return S_OK;
    }
    return Object::QueryInterface(iid, object);
}

HRESULT MemoryBuffer::get_Capacity(UINT32* value) {
    return Property(getCapacityMember, value, static_cast<UINT32>(content.size()));
}

HRESULT MemoryBuffer::get_Length(UINT32* value) {
    return Property(getLengthMember, value, static_cast<UINT32>(content.size()));
}

HRESULT MemoryBuffer::Buffer(BYTE** value) {
    return Property(bufferMember, value, content.data());
}

}  // namespace orv::objects
