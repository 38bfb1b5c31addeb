#pragma once

#include "platform/abi/streams.h"
#include "runtimes/objects/observer.h"

namespace orv::objects {

template <>
struct Stub<IBuffer> : IBuffer {
    HRESULT get_Capacity(UINT32*) override { return Unexpected("IBuffer", "get_Capacity"); }
    HRESULT get_Length(UINT32*) override { return Unexpected("IBuffer", "get_Length"); }
    HRESULT put_Length(UINT32) override { return Unexpected("IBuffer", "put_Length"); }
};

template <>
struct Stub<IDataReader> : IDataReader {
    HRESULT get_UnconsumedBufferLength(UINT32*) override {
        return Unexpected("DataReader", "get_UnconsumedBufferLength");
    }
    HRESULT get_UnicodeEncoding(UnicodeEncoding*) override {
        return Unexpected("DataReader", "get_UnicodeEncoding");
    }
    HRESULT put_UnicodeEncoding(UnicodeEncoding) override {
        return Unexpected("DataReader", "put_UnicodeEncoding");
    }
    HRESULT get_ByteOrder(ByteOrder*) override { return Unexpected("DataReader", "get_ByteOrder"); }
    HRESULT put_ByteOrder(ByteOrder) override { return Unexpected("DataReader", "put_ByteOrder"); }
    HRESULT get_InputStreamOptions(InputStreamOptions*) override {
        return Unexpected("DataReader", "get_InputStreamOptions");
    }
    HRESULT put_InputStreamOptions(InputStreamOptions) override {
        return Unexpected("DataReader", "put_InputStreamOptions");
    }
    HRESULT ReadByte(BYTE*) override { return Unexpected("DataReader", "ReadByte"); }
    HRESULT ReadBytes(UINT32, BYTE*) override { return Unexpected("DataReader", "ReadBytes"); }
    HRESULT ReadBuffer(UINT32, IBuffer**) override {
        return Unexpected("DataReader", "ReadBuffer");
    }
    HRESULT ReadBoolean(boolean*) override { return Unexpected("DataReader", "ReadBoolean"); }
    HRESULT ReadGuid(GUID*) override { return Unexpected("DataReader", "ReadGuid"); }
    HRESULT ReadInt16(INT16*) override { return Unexpected("DataReader", "ReadInt16"); }
    HRESULT ReadInt32(INT32*) override { return Unexpected("DataReader", "ReadInt32"); }
    HRESULT ReadInt64(INT64*) override { return Unexpected("DataReader", "ReadInt64"); }
    HRESULT ReadUInt16(UINT16*) override { return Unexpected("DataReader", "ReadUInt16"); }
    HRESULT ReadUInt32(UINT32*) override { return Unexpected("DataReader", "ReadUInt32"); }
    HRESULT ReadUInt64(UINT64*) override { return Unexpected("DataReader", "ReadUInt64"); }
    HRESULT ReadSingle(FLOAT*) override { return Unexpected("DataReader", "ReadSingle"); }
    HRESULT ReadDouble(DOUBLE*) override { return Unexpected("DataReader", "ReadDouble"); }
    HRESULT ReadString(UINT32, HSTRING*) override { return Unexpected("DataReader", "ReadString"); }
    HRESULT ReadDateTime(DateTime*) override { return Unexpected("DataReader", "ReadDateTime"); }
    HRESULT ReadTimeSpan(TimeSpan*) override { return Unexpected("DataReader", "ReadTimeSpan"); }
    HRESULT LoadAsync(UINT32, IAsyncOperation<UINT32>**) override {
        return Unexpected("DataReader", "LoadAsync");
    }
    HRESULT DetachBuffer(IBuffer**) override { return Unexpected("DataReader", "DetachBuffer"); }
    HRESULT DetachStream(IInputStream**) override {
        return Unexpected("DataReader", "DetachStream");
    }
};

template <>
struct Stub<IDataReaderStatics> : IDataReaderStatics {
    HRESULT FromBuffer(IBuffer*, IDataReader**) override {
        return Unexpected("DataReader", "FromBuffer");
    }
};

template <>
struct Stub<IDataWriter> : IDataWriter {
    HRESULT get_UnstoredBufferLength(UINT32*) override {
        return Unexpected("DataWriter", "get_UnstoredBufferLength");
    }
    HRESULT get_UnicodeEncoding(UnicodeEncoding*) override {
        return Unexpected("DataWriter", "get_UnicodeEncoding");
    }
    HRESULT put_UnicodeEncoding(UnicodeEncoding) override {
        return Unexpected("DataWriter", "put_UnicodeEncoding");
    }
    HRESULT get_ByteOrder(ByteOrder*) override { return Unexpected("DataWriter", "get_ByteOrder"); }
    HRESULT put_ByteOrder(ByteOrder) override { return Unexpected("DataWriter", "put_ByteOrder"); }
    HRESULT WriteByte(BYTE) override { return Unexpected("DataWriter", "WriteByte"); }
    HRESULT WriteBytes(UINT32, const BYTE*) override {
        return Unexpected("DataWriter", "WriteBytes");
    }
    HRESULT WriteBuffer(IBuffer*) override { return Unexpected("DataWriter", "WriteBuffer"); }
    HRESULT WriteBufferRange(IBuffer*, UINT32, UINT32) override {
        return Unexpected("DataWriter", "WriteBufferRange");
    }
    HRESULT WriteBoolean(boolean) override { return Unexpected("DataWriter", "WriteBoolean"); }
    HRESULT WriteGuid(GUID) override { return Unexpected("DataWriter", "WriteGuid"); }
    HRESULT WriteInt16(INT16) override { return Unexpected("DataWriter", "WriteInt16"); }
    HRESULT WriteInt32(INT32) override { return Unexpected("DataWriter", "WriteInt32"); }
    HRESULT WriteInt64(INT64) override { return Unexpected("DataWriter", "WriteInt64"); }
    HRESULT WriteUInt16(UINT16) override { return Unexpected("DataWriter", "WriteUInt16"); }
    HRESULT WriteUInt32(UINT32) override { return Unexpected("DataWriter", "WriteUInt32"); }
    HRESULT WriteUInt64(UINT64) override { return Unexpected("DataWriter", "WriteUInt64"); }
    HRESULT WriteSingle(FLOAT) override { return Unexpected("DataWriter", "WriteSingle"); }
    HRESULT WriteDouble(DOUBLE) override { return Unexpected("DataWriter", "WriteDouble"); }
    HRESULT WriteDateTime(DateTime) override { return Unexpected("DataWriter", "WriteDateTime"); }
    HRESULT WriteTimeSpan(TimeSpan) override { return Unexpected("DataWriter", "WriteTimeSpan"); }
    HRESULT WriteString(HSTRING, UINT32*) override {
        return Unexpected("DataWriter", "WriteString");
    }
    HRESULT MeasureString(HSTRING, UINT32*) override {
        return Unexpected("DataWriter", "MeasureString");
    }
    HRESULT StoreAsync(IAsyncOperation<UINT32>**) override {
        return Unexpected("DataWriter", "StoreAsync");
    }
    HRESULT FlushAsync(IAsyncOperation<boolean>**) override {
        return Unexpected("DataWriter", "FlushAsync");
    }
    HRESULT DetachBuffer(IBuffer**) override { return Unexpected("DataWriter", "DetachBuffer"); }
    HRESULT DetachStream(IOutputStream**) override {
        return Unexpected("DataWriter", "DetachStream");
    }
};

}  // namespace orv::objects
