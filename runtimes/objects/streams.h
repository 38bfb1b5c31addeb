// Reads and writes buffers in memory.
#pragma once

#include "runtimes/objects/buffer.h"

namespace orv::objects {

// Implements DataReader.FromBuffer. Like the platform's reader, this reader is not thread-safe.
HRESULT ReadFromBuffer(IBuffer* buffer, IDataReader** reader);

class MemoryWriter final : public Object<Stub<IDataWriter>> {
  public:
    MemoryWriter();

    HRESULT WriteBytes(UINT32 length, const BYTE* values) override;
    // Returns the written bytes and empties the writer.
    HRESULT DetachBuffer(IBuffer** buffer) override;

  private:
    std::vector<BYTE> written;
};

}  // namespace orv::objects
