#pragma once

#include <string>

namespace orv::objects {

// `text` must be well-formed UTF-8.
std::u16string FromUtf8(const std::string& text);

}  // namespace orv::objects
