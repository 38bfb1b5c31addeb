// Interfaces of Windows.Storage.Streams: buffers, their bytes, readers and writers.
#pragma once

#include "platform/abi/foundation.h"

namespace orv {

struct IInputStream;
struct IOutputStream;
enum class UnicodeEncoding : INT32;
enum class ByteOrder : INT32;
enum class InputStreamOptions : UINT32;

struct IBuffer : IInspectable {
    static constexpr GUID Iid = Guid("905a0fe0-bc53-11df-8c49-001e4fc686da");
    virtual HRESULT get_Capacity(UINT32* value) = 0;
    virtual HRESULT get_Length(UINT32* value) = 0;
    virtual HRESULT put_Length(UINT32 value) = 0;
};

// Returns the address of the buffer's bytes, which the buffer owns. Only the first
// IBuffer::get_Length bytes are valid.
struct IBufferByteAccess : IUnknown {
    static constexpr GUID Iid = Guid("905a0fef-bc53-11df-8c49-001e4fc686da");
    virtual HRESULT Buffer(BYTE** value) = 0;
};

struct IDataReader : IInspectable {
    static constexpr GUID Iid = Guid("e2b50029-b4c1-4314-a4b8-fb813a2f275e");
    virtual HRESULT get_UnconsumedBufferLength(UINT32* value) = 0;
    virtual HRESULT get_UnicodeEncoding(UnicodeEncoding* value) = 0;
    virtual HRESULT put_UnicodeEncoding(UnicodeEncoding value) = 0;
    virtual HRESULT get_ByteOrder(ByteOrder* value) = 0;
    virtual HRESULT put_ByteOrder(ByteOrder value) = 0;
    virtual HRESULT get_InputStreamOptions(InputStreamOptions* value) = 0;
    virtual HRESULT put_InputStreamOptions(InputStreamOptions value) = 0;
    virtual HRESULT ReadByte(BYTE* value) = 0;
    virtual HRESULT ReadBytes(UINT32 length, BYTE* values) = 0;
    virtual HRESULT ReadBuffer(UINT32 length, IBuffer** buffer) = 0;
    virtual HRESULT ReadBoolean(boolean* value) = 0;
    virtual HRESULT ReadGuid(GUID* value) = 0;
    virtual HRESULT ReadInt16(INT16* value) = 0;
    virtual HRESULT ReadInt32(INT32* value) = 0;
    virtual HRESULT ReadInt64(INT64* value) = 0;
    virtual HRESULT ReadUInt16(UINT16* value) = 0;
    virtual HRESULT ReadUInt32(UINT32* value) = 0;
    virtual HRESULT ReadUInt64(UINT64* value) = 0;
    virtual HRESULT ReadSingle(FLOAT* value) = 0;
    virtual HRESULT ReadDouble(DOUBLE* value) = 0;
    virtual HRESULT ReadString(UINT32 codeUnitCount, HSTRING* value) = 0;
    virtual HRESULT ReadDateTime(DateTime* value) = 0;
    virtual HRESULT ReadTimeSpan(TimeSpan* value) = 0;
    virtual HRESULT LoadAsync(UINT32 count, IAsyncOperation<UINT32>** operation) = 0;
    virtual HRESULT DetachBuffer(IBuffer** buffer) = 0;
    virtual HRESULT DetachStream(IInputStream** stream) = 0;
};

struct IDataReaderStatics : IInspectable {
    static constexpr GUID Iid = Guid("11fcbfc8-f93a-471b-b121-f379e349313c");
    virtual HRESULT FromBuffer(IBuffer* buffer, IDataReader** reader) = 0;
};

struct IDataWriter : IInspectable {
    static constexpr GUID Iid = Guid("64b89265-d341-4922-b38a-dd4af8808c4e");
    virtual HRESULT get_UnstoredBufferLength(UINT32* value) = 0;
    virtual HRESULT get_UnicodeEncoding(UnicodeEncoding* value) = 0;
    virtual HRESULT put_UnicodeEncoding(UnicodeEncoding value) = 0;
    virtual HRESULT get_ByteOrder(ByteOrder* value) = 0;
    virtual HRESULT put_ByteOrder(ByteOrder value) = 0;
    virtual HRESULT WriteByte(BYTE value) = 0;
    virtual HRESULT WriteBytes(UINT32 length, const BYTE* values) = 0;
    virtual HRESULT WriteBuffer(IBuffer* buffer) = 0;
    virtual HRESULT WriteBufferRange(IBuffer* buffer, UINT32 start, UINT32 count) = 0;
    virtual HRESULT WriteBoolean(boolean value) = 0;
    virtual HRESULT WriteGuid(GUID value) = 0;
    virtual HRESULT WriteInt16(INT16 value) = 0;
    virtual HRESULT WriteInt32(INT32 value) = 0;
    virtual HRESULT WriteInt64(INT64 value) = 0;
    virtual HRESULT WriteUInt16(UINT16 value) = 0;
    virtual HRESULT WriteUInt32(UINT32 value) = 0;
    virtual HRESULT WriteUInt64(UINT64 value) = 0;
    virtual HRESULT WriteSingle(FLOAT value) = 0;
    virtual HRESULT WriteDouble(DOUBLE value) = 0;
    virtual HRESULT WriteDateTime(DateTime value) = 0;
    virtual HRESULT WriteTimeSpan(TimeSpan value) = 0;
    virtual HRESULT WriteString(HSTRING value, UINT32* codeUnitCount) = 0;
    virtual HRESULT MeasureString(HSTRING value, UINT32* codeUnitCount) = 0;
    virtual HRESULT StoreAsync(IAsyncOperation<UINT32>** operation) = 0;
    virtual HRESULT FlushAsync(IAsyncOperation<boolean>** operation) = 0;
    virtual HRESULT DetachBuffer(IBuffer** buffer) = 0;
    virtual HRESULT DetachStream(IOutputStream** stream) = 0;
};

struct DataReader {
    static constexpr char16_t Name[] = u"Windows.Storage.Streams.DataReader";
    using DefaultInterface = IDataReader;
};
struct DataWriter {
    static constexpr char16_t Name[] = u"Windows.Storage.Streams.DataWriter";
    using DefaultInterface = IDataWriter;
};

}  // namespace orv
