#pragma once

#include "runtimes/objects/buffer.h"

namespace orv::objects {

// Implements DataReader.FromBuffer with a MemoryReader. Like the platform's reader, this reader is
// not thread-safe.
HRESULT ReadFromBuffer(IBuffer* buffer, IDataReader** reader);

// The bytes that a reader has not read yet. Output parameters must not be null. A local copy of
// this object reads faster, because the compiler can keep it in registers.
class UnreadBytes {
  public:
    explicit UnreadBytes(const std::vector<BYTE>& bytes)
        : next(bytes.data()), left(static_cast<UINT32>(bytes.size())) {}

    HRESULT get_UnconsumedBufferLength(UINT32* value) const {
        *value = left;
        return S_OK;
    }

    HRESULT ReadByte(BYTE* value) {
        if (left == 0) {
            return E_BOUNDS;
        }
        --left;
        *value = *next++;
        return S_OK;
    }

  private:
    const BYTE* next;
    UINT32 left;
};

class MemoryReader final : public Object<Stub<IDataReader>> {
  public:
    explicit MemoryReader(const Ref<MemoryBuffer>& source);

    HRESULT get_UnconsumedBufferLength(UINT32* value) override;
    HRESULT ReadByte(BYTE* value) override;

    UnreadBytes unread;

  private:
    const Ref<MemoryBuffer> buffer;  // owns the bytes
};

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
