#pragma once

#include <string>
#include <string_view>

namespace orv::doctor {

// Returns the hash as 64 hexadecimal digits.
std::string Sha256(std::string_view bytes);

}  // namespace orv::doctor
