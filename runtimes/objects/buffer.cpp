// A buffer in memory.
#include "runtimes/objects/buffer.h"

namespace orv::objects {

namespace {

// Asked by the runtime itself to tell its own buffers from foreign ones; known to nobody else. The
// answer carries no reference and is no call of anybody's.
constexpr GUID OwnBufferIid = Guid("6f3ae1d7-0c52-4b9e-9d41-72c5b80f1a36");

Class bufferClass("IBuffer");

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

HRESULT MemoryBuffer::get_Length(UINT32* value) {
    static Member member("IBuffer", "get_Length");
    return Property(member, value, static_cast<UINT32>(content.size()));
}

HRESULT MemoryBuffer::Buffer(BYTE** value) {
    static Member member("IBuffer", "Buffer");
    return Property(member, value, content.data());
}

}  // namespace orv::objects
