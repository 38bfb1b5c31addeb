// The base of the Windows Runtime's binary interface: types, codes, identifiers, basic interfaces,
// and string functions.
//
// All interfaces in this directory are declared by hand under the platform's names. A C++ class
// with only pure virtual functions and no virtual destructor has exactly the table of function
// pointers that the runtime expects, in order of declaration. The order is part of the binary
// interface: do not change it. No calling convention is stated, because x86-64 has only one.
#pragma once

#include <cstdint>
#include <type_traits>

namespace orv {

using BYTE = std::uint8_t;
using boolean = std::uint8_t;
using INT16 = std::int16_t;
using UINT16 = std::uint16_t;
using INT32 = std::int32_t;
using UINT32 = std::uint32_t;
using INT64 = std::int64_t;
using UINT64 = std::uint64_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using FLOAT = float;
using DOUBLE = double;
using HRESULT = std::int32_t;

struct TimeSpan {
    INT64 Duration;
};
struct DateTime {
    INT64 UniversalTime;
};
struct EventRegistrationToken {
    INT64 value;
};

// The handle of a runtime string, null for the empty string. A caller that receives a string as
// output owns it and deletes it with WindowsDeleteString.
using HSTRING = struct HSTRING__*;

struct GUID {
    UINT32 Data1;
    UINT16 Data2;
    UINT16 Data3;
    BYTE Data4[8];
};
using CLSID = GUID;

constexpr bool operator==(const GUID& a, const GUID& b) {
    if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) {
        return false;
    }
    for (int i = 0; i < 8; ++i) {
        if (a.Data4[i] != b.Data4[i]) {
            return false;
        }
    }
    return true;
}
constexpr bool operator!=(const GUID& a, const GUID& b) {
    return !(a == b);
}

constexpr UINT32 HexValue(const char* text, int digits) {
    UINT32 value = 0;
    for (int i = 0; i < digits; ++i) {
        const char c = text[i];
        const int nibble = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
        value = value << 4 | static_cast<UINT32>(nibble);
    }
    return value;
}

// Converts the text form of a GUID, 8-4-4-4-12 hexadecimal digits.
constexpr GUID Guid(const char (&text)[37]) {
    GUID guid{HexValue(text, 8),
              static_cast<UINT16>(HexValue(text + 9, 4)),
              static_cast<UINT16>(HexValue(text + 14, 4)),
              {}};
    for (int i = 0; i < 8; ++i) {
        const int at = 19 + 2 * i + (i >= 2 ? 1 : 0);
        guid.Data4[i] = static_cast<BYTE>(HexValue(text + at, 2));
    }
    return guid;
}

constexpr HRESULT Hresult(UINT32 code) {
    return static_cast<HRESULT>(code);
}
constexpr bool Failed(HRESULT code) {
    return code < 0;
}

constexpr HRESULT S_OK = 0;
constexpr HRESULT E_BOUNDS = Hresult(0x8000000B);
constexpr HRESULT E_ILLEGAL_STATE_CHANGE = Hresult(0x8000000D);
constexpr HRESULT E_ILLEGAL_METHOD_CALL = Hresult(0x8000000E);
constexpr HRESULT RO_E_CLOSED = Hresult(0x80000013);
constexpr HRESULT E_ILLEGAL_DELEGATE_ASSIGNMENT = Hresult(0x80000018);
constexpr HRESULT E_NOTIMPL = Hresult(0x80004001);
constexpr HRESULT E_NOINTERFACE = Hresult(0x80004002);
constexpr HRESULT E_POINTER = Hresult(0x80004003);
constexpr HRESULT E_FAIL = Hresult(0x80004005);
constexpr HRESULT REGDB_E_CLASSNOTREG = Hresult(0x80040154);
constexpr HRESULT CO_E_NOTINITIALIZED = Hresult(0x800401F0);
constexpr HRESULT E_OUTOFMEMORY = Hresult(0x8007000E);
constexpr HRESULT E_INVALIDARG = Hresult(0x80070057);

enum class TrustLevel : INT32;
struct IStream;

struct IUnknown {
    static constexpr GUID Iid = Guid("00000000-0000-0000-c000-000000000046");
    virtual HRESULT QueryInterface(const GUID* iid, void** object) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;
};

struct IInspectable : IUnknown {
    static constexpr GUID Iid = Guid("af86e2e0-b12d-4c6a-9c5a-d7aa65101e90");
    virtual HRESULT GetIids(ULONG* count, GUID** iids) = 0;
    virtual HRESULT GetRuntimeClassName(HSTRING* name) = 0;
    virtual HRESULT GetTrustLevel(TrustLevel* level) = 0;
};

struct IActivationFactory : IInspectable {
    static constexpr GUID Iid = Guid("00000035-0000-0000-c000-000000000046");
    virtual HRESULT ActivateInstance(IInspectable** instance) = 0;
};

// Marker interface of objects that may be called from any thread.
struct IAgileObject : IUnknown {
    static constexpr GUID Iid = Guid("94ea2b94-e9cc-49e0-c0ff-ee64ca8f5b90");
};

struct IMarshal : IUnknown {
    static constexpr GUID Iid = Guid("00000003-0000-0000-c000-000000000046");
    virtual HRESULT GetUnmarshalClass(const GUID* iid, void* object, DWORD destContext,
                                      void* destContextPtr, DWORD flags, CLSID* clsid) = 0;
    virtual HRESULT GetMarshalSizeMax(const GUID* iid, void* object, DWORD destContext,
                                      void* destContextPtr, DWORD flags, DWORD* size) = 0;
    virtual HRESULT MarshalInterface(IStream* stream, const GUID* iid, void* object,
                                     DWORD destContext, void* destContextPtr, DWORD flags) = 0;
    virtual HRESULT UnmarshalInterface(IStream* stream, const GUID* iid, void** object) = 0;
    virtual HRESULT ReleaseMarshalData(IStream* stream) = 0;
    virtual HRESULT DisconnectObject(DWORD reserved) = 0;
};

// The identifier of an interface. For an instance of a generic interface, the header that declares
// the argument types contains a specialization.
template <typename Interface>
inline constexpr GUID IidOf = Interface::Iid;

namespace abi_detail {

template <typename T, typename = void>
struct Passed {
    using Type = T;
};
template <typename T>
struct Passed<T, std::enable_if_t<std::is_base_of_v<IUnknown, T>>> {
    using Type = T*;
};
template <typename T>
struct Passed<T, std::void_t<typename T::DefaultInterface>> {
    using Type = typename T::DefaultInterface*;
};

}  // namespace abi_detail

// Defines how a type of the runtime is passed: a runtime class as a pointer to its default
// interface, an interface as a pointer to itself, anything else by value.
template <typename T>
using Abi = typename abi_detail::Passed<T>::Type;

// Functions of the runtime. On Windows, combase.dll defines them; elsewhere, the linked runtime
// does.
extern "C" {
HRESULT WindowsCreateString(const char16_t* source, UINT32 length, HSTRING* string);
HRESULT WindowsDeleteString(HSTRING string);
const char16_t* WindowsGetStringRawBuffer(HSTRING string, UINT32* length);
}

}  // namespace orv
