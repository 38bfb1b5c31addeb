#include "runtimes/objects/utf8.h"

#include "platform/abi/base.h"

namespace orv::objects {

std::u16string FromUtf8(const std::string& text) {
    std::u16string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const auto lead = static_cast<BYTE>(text[at++]);
        const int following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
        UINT32 point = following == 0 ? lead : lead & (0x3FU >> following);
        for (int i = 0; i < following && at < text.size(); ++i) {
            point = point << 6 | (static_cast<BYTE>(text[at++]) & 0x3FU);
        }
        if (point >= 0x10000) {
            result.push_back(static_cast<char16_t>(0xD7C0 + (point >> 10)));
            point = 0xDC00 | (point & 0x3FF);
        }
        result.push_back(static_cast<char16_t>(point));
    }
    return result;
}

}  // namespace orv::objects
