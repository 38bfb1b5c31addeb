#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/abi/base.h"

namespace orv::simulated {

// Each function returns std::nullopt if the text is malformed.
std::optional<GUID> ParseUuid(const std::string& text);
// The form is "A0:B1:C2:D3:E4:F5", in upper or lower case.
std::optional<UINT64> ParseAddress(const std::string& text);
// The form is two hexadecimal digits for each byte.
std::optional<std::vector<BYTE>> ParseBytes(const std::string& text);
// Parses a hexadecimal code such as "0x80004005".
std::optional<HRESULT> ParseCode(const std::string& text);

}  // namespace orv::simulated
