// Reader and writer over buffers in memory.
#pragma once

#include "runtimes/objects/buffer.h"

namespace orv::objects {

extern Class dataReaderClass;
extern Class dataWriterClass;

// Not for several threads at once, like the platform's own.
class MemoryReader final : public Object<Stub<IDataReader>> {
  public:
    explicit MemoryReader(Ref<MemoryBuffer> source);

    // The work of DataReader.FromBuffer.
    static HRESULT FromBuffer(IBuffer* buffer, IDataReader** reader);

    HRESULT get_UnconsumedBufferLength(UINT32* value) override;
    HRESULT ReadByte(BYTE* value) override;

  private:
    const Ref<MemoryBuffer> buffer;
    const BYTE* position;
    const BYTE* const end;
};

class MemoryWriter final : public Object<Stub<IDataWriter>> {
  public:
    MemoryWriter();

    HRESULT WriteBytes(UINT32 length, const BYTE* values) override;
    // Leaves the writer empty.
    HRESULT DetachBuffer(IBuffer** buffer) override;

  private:
    std::vector<BYTE> written;
};

}  // namespace orv::objects
