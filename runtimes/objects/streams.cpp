// Reads and writes buffers in memory.
#include "runtimes/objects/streams.h"

namespace orv::objects {

namespace {

Class dataReaderClass("DataReader");
Member getUnconsumedBufferLengthMember(dataReaderClass.name, "get_UnconsumedBufferLength");
Member readByteMember(dataReaderClass.name, "ReadByte");
Class dataWriterClass("DataWriter");
Member writeBytesMember(dataWriterClass.name, "WriteBytes");
Member detachBufferMember(dataWriterClass.name, "DetachBuffer");

// Reads a value in two calls for each byte. If `IsHeard` is false, the calls do not notify the
// observer, so each call takes only a few instructions.
template <bool IsHeard>
class MemoryReader final : public Object<Stub<IDataReader>> {
  public:
    explicit MemoryReader(Ref<MemoryBuffer> source)
        : Object(dataReaderClass),
          buffer(std::move(source)),
          position(buffer->Bytes().data()),
          end(position + buffer->Bytes().size()) {}

    HRESULT get_UnconsumedBufferLength(UINT32* value) override {
        const auto left = static_cast<UINT32>(end - position);
        if constexpr (IsHeard) {
            return Property(getUnconsumedBufferLengthMember, value, left);
        }
        if (value == nullptr) {
            return E_POINTER;
        }
        *value = left;
        return S_OK;
    }

    HRESULT ReadByte(BYTE* value) override {
        if constexpr (IsHeard) {
            return Call(readByteMember, [&] { return Next(value); });
        }
        return Next(value);
    }

  private:
    HRESULT Next(BYTE* value) {
        if (value == nullptr) {
            return E_POINTER;
        }
        if (position == end) {
            return E_BOUNDS;
        }
        *value = *position++;
        return S_OK;
    }

    const Ref<MemoryBuffer> buffer;
    const BYTE* position;
    const BYTE* const end;
};

}  // namespace

HRESULT ReadFromBuffer(IBuffer* buffer, IDataReader** reader) {
    if (buffer == nullptr) {
        return E_POINTER;
    }
    const Ref<MemoryBuffer> source = MemoryBuffer::From(buffer);
    if (!source) {
        return E_INVALIDARG;
    }
    return TheObserver().hearsCalls ? Give(reader, Make<MemoryReader<true>>(source))
                                    : Give(reader, Make<MemoryReader<false>>(source));
}

MemoryWriter::MemoryWriter() : Object(dataWriterClass) {}

HRESULT MemoryWriter::WriteBytes(UINT32 length, const BYTE* values) {
    return Call(writeBytesMember, [&] {
        if (values == nullptr) {
            return E_POINTER;
        }
        written.insert(written.end(), values, values + length);
        return S_OK;
    });
}

HRESULT MemoryWriter::DetachBuffer(IBuffer** buffer) {
    return Call(detachBufferMember, [&] {
        std::vector<BYTE> bytes;
        bytes.swap(written);
        return Give(buffer, Make<MemoryBuffer>(std::move(bytes)));
    });
}

}  // namespace orv::objects
