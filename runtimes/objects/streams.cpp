#include "runtimes/objects/streams.h"

namespace orv::objects {

namespace {

Class dataReaderClass("DataReader");
Member getUnconsumedBufferLengthMember(dataReaderClass.name, "get_UnconsumedBufferLength");
Member readByteMember(dataReaderClass.name, "ReadByte");
Class dataWriterClass("DataWriter");
Member writeBytesMember(dataWriterClass.name, "WriteBytes");
Member detachBufferMember(dataWriterClass.name, "DetachBuffer");

}  // namespace

HRESULT ReadFromBuffer(IBuffer* buffer, IDataReader** reader) {
    if (buffer == nullptr) {
        return E_POINTER;
    }
    const Ref<MemoryBuffer> source = MemoryBuffer::From(buffer);
    if (!source) {
        return E_INVALIDARG;
    }
    return Give(reader, Make<MemoryReader>(source));
}

MemoryReader::MemoryReader(const Ref<MemoryBuffer>& source)
    : Object(dataReaderClass), unread(source->Bytes()), buffer(source) {}

HRESULT MemoryReader::get_UnconsumedBufferLength(UINT32* value) {
    return Call(getUnconsumedBufferLengthMember, [&] {
        return value == nullptr ? E_POINTER : unread.get_UnconsumedBufferLength(value);
    });
}

HRESULT MemoryReader::ReadByte(BYTE* value) {
    return Call(readByteMember,
                [&] { return value == nullptr ? E_POINTER : unread.ReadByte(value); });
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
