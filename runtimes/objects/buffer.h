// A buffer in memory.
#pragma once

#include <vector>

#include "runtimes/objects/object.h"
#include "runtimes/objects/stubs/streams.h"

namespace orv::objects {

class MemoryBuffer final : public Object<Stub<IBuffer>, IBufferByteAccess> {
  public:
    explicit MemoryBuffer(std::vector<BYTE> bytes);

    // The same buffer seen from inside. A foreign buffer is asked for its bytes, which are copied;
    // null when it does not give them.
    static Ref<MemoryBuffer> From(IBuffer* buffer);

    const std::vector<BYTE>& Bytes() const { return content; }

    HRESULT QueryInterface(const GUID* iid, void** object) override;
    HRESULT get_Length(UINT32* value) override;
    HRESULT Buffer(BYTE** value) override;

  private:
    std::vector<BYTE> content;
};

}  // namespace orv::objects
