#include <cstdlib>
#include <cstring>

#include "platform/abi/base.h"

namespace orv {

// The header of a string. The zero-terminated characters follow it.
struct HSTRING__ {
    UINT32 length;
};

namespace {

char16_t* TextOf(HSTRING string) {
    return reinterpret_cast<char16_t*>(string + 1);
}

}  // namespace

HRESULT WindowsCreateString(const char16_t* source, UINT32 length, HSTRING* string) {
    if (string == nullptr || (source == nullptr && length != 0)) {
        return E_POINTER;
    }
    *string = nullptr;
    if (length == 0) {
        return S_OK;
    }
    const std::size_t bytes = sizeof(char16_t) * length;
    const auto made =
        static_cast<HSTRING>(std::malloc(sizeof(HSTRING__) + bytes + sizeof(char16_t)));
    if (made == nullptr) {
        return E_OUTOFMEMORY;
    }
    made->length = length;
    std::memcpy(TextOf(made), source, bytes);
    TextOf(made)[length] = u'\0';
    *string = made;
    return S_OK;
}

HRESULT WindowsDeleteString(HSTRING string) {
    std::free(string);
    return S_OK;
}

const char16_t* WindowsGetStringRawBuffer(HSTRING string, UINT32* length) {
    if (length != nullptr) {
        *length = string == nullptr ? 0 : string->length;
    }
    return string == nullptr ? u"" : TextOf(string);
}

}  // namespace orv
