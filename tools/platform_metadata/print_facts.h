// Prints the vtable slots, sizes and values that src/platform/abi declares, one in each line. A
// line contains, for instance: IRadio, slot get_State, 9
#pragma once

#include <cstdio>
#include <string>
#include <type_traits>

#include "abi/slots.h"
#include "platform/abi/base.h"

namespace orv {

template <typename T>
std::string TypeText() {
    const std::string text = __PRETTY_FUNCTION__;
    const auto start = text.find("T = ") + 4;
    return text.substr(start, text.find(';', start) - start);
}

inline void Text(const char* subject, const std::string& aspect, const std::string& value) {
    std::printf("%s\t%s\t%s\n", subject, aspect.c_str(), value.c_str());
}

inline void Number(const char* subject, const std::string& aspect, long long value) {
    Text(subject, aspect, std::to_string(value));
}

inline void Id(const char* subject, const GUID& id) {
    char text[37];
    const BYTE* last = id.Data4;
    std::snprintf(text, sizeof(text), "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", id.Data1,
                  id.Data2, id.Data3, last[0], last[1], last[2], last[3], last[4], last[5], last[6],
                  last[7]);
    Text(subject, "id", text);
}

template <typename Interface>
void Table(const char* subject) {
    const char* base = "IUnknown";
    if (std::is_same_v<IUnknown, Interface>) {
        base = "-";
    } else if (std::is_base_of_v<IInspectable, Interface> &&
               !std::is_same_v<IInspectable, Interface>) {
        base = "IInspectable";
    }
    Id(subject, IidOf<Interface>);
    Text(subject, "base", base);
    Number(subject, "slots", SlotCount<Interface>());
}

template <typename Member>
void Slot(const char* subject, const std::string& name, Member member) {
    Number(subject, "slot " + name, orv::SlotOf(member));
    Text(subject, "parameters " + name, TypeText<Member>());
}

inline void Class(const char* subject, const std::u16string& name) {
    Text(subject, "name", std::string(name.begin(), name.end()));
}

}  // namespace orv
