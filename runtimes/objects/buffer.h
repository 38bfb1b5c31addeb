#pragma once

#include <vector>

#include "runtimes/objects/object.h"
#include "runtimes/objects/stubs/streams.h"

namespace orv::objects {

class MemoryBuffer final : public Object<Stub<IBuffer>, IBufferByteAccess> {
  public:
    explicit MemoryBuffer(std::vector<BYTE> bytes);

    // Returns `buffer` if it is a MemoryBuffer, otherwise a new buffer with a copy of its bytes.
    // Returns null if the bytes cannot be read.
    static Ref<MemoryBuffer> From(IBuffer* buffer);

    const std::vector<BYTE>& Bytes() const { return content; }

    HRESULT QueryInterface(const GUID* iid, void** object) override;
    HRESULT get_Capacity(UINT32* value) override;
    HRESULT get_Length(UINT32* value) override;
    HRESULT Buffer(BYTE** value) override;

  private:
    std::vector<BYTE> content;
};

}  // namespace orv::objects
