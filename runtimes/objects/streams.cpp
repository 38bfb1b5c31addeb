// Reader and writer over buffers in memory.
#include "runtimes/objects/streams.h"

namespace orv::objects {

Class dataReaderClass("DataReader");
Class dataWriterClass("DataWriter");

MemoryReader::MemoryReader(Ref<MemoryBuffer> source)
    : Object(dataReaderClass),
      buffer(std::move(source)),
      position(buffer->Bytes().data()),
      end(position + buffer->Bytes().size()) {}

HRESULT MemoryReader::FromBuffer(IBuffer* buffer, IDataReader** reader) {
    if (buffer == nullptr) {
        return E_POINTER;
    }
    const Ref<MemoryBuffer> source = MemoryBuffer::From(buffer);
    return source ? Give(reader, Make<MemoryReader>(source)) : E_INVALIDARG;
}

HRESULT MemoryReader::get_UnconsumedBufferLength(UINT32* value) {
    static Member member("DataReader", "get_UnconsumedBufferLength");
    return Property(member, value, static_cast<UINT32>(end - position));
}

HRESULT MemoryReader::ReadByte(BYTE* value) {
    static Member member("DataReader", "ReadByte");
    return Call(member, [&] {
        if (value == nullptr) {
            return E_POINTER;
        }
        if (position == end) {
            return E_BOUNDS;
        }
        *value = *position++;
        return S_OK;
    });
}

MemoryWriter::MemoryWriter() : Object(dataWriterClass) {}

HRESULT MemoryWriter::WriteBytes(UINT32 length, const BYTE* values) {
    static Member member("DataWriter", "WriteBytes");
    return Call(member, [&] {
        if (values == nullptr && length != 0) {
            return E_POINTER;
        }
        written.insert(written.end(), values, values + length);
        return S_OK;
    });
}

HRESULT MemoryWriter::DetachBuffer(IBuffer** buffer) {
    static Member member("DataWriter", "DetachBuffer");
    return Call(member, [&] {
        std::vector<BYTE> bytes;
        bytes.swap(written);
        return Give(buffer, Make<MemoryBuffer>(std::move(bytes)));
    });
}

}  // namespace orv::objects
