// Texts in which the world's user writes names, addresses, identifiers and bytes.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/abi/base.h"

namespace orv::simulated {

// `text` is well-formed UTF-8.
std::u16string FromUtf8(const std::string& text);

// Each gives nothing when the text is not of its form.
std::optional<GUID> ParseUuid(const std::string& text);
// "A0:B1:C2:D3:E4:F5", in either case.
std::optional<UINT64> ParseAddress(const std::string& text);
// Two hexadecimal digits for each byte.
std::optional<std::vector<BYTE>> ParseBytes(const std::string& text);
// "0x80004005".
std::optional<HRESULT> ParseCode(const std::string& text);

}  // namespace orv::simulated
