// Calls of runtime members as the logic writes them: a failure is raised, outputs are owned.
#pragma once

#include <tuple>
#include <type_traits>

#include "platform/failure.h"
#include "platform/reference.h"
#include "platform/strings.h"

namespace orv {

namespace call_detail {

template <typename Output, typename = void>
struct Owner {
    using Type = Output;
    static Output* Put(Type& value) { return &value; }
};
template <typename Interface>
struct Owner<Interface*, std::enable_if_t<std::is_base_of_v<IUnknown, Interface>>> {
    using Type = Reference<Interface>;
    static Interface** Put(Type& reference) { return reference.Put(); }
};
template <>
struct Owner<HSTRING> {
    using Type = RuntimeString;
    static HSTRING* Put(Type& string) { return string.Put(); }
};

template <typename... Parameters>
using OutputOf = std::remove_pointer_t<
    std::tuple_element_t<sizeof...(Parameters) - 1, std::tuple<Parameters...>>>;

}  // namespace call_detail

// What owns a value of the binary interface: a Reference for an interface, a RuntimeString for a
// string, the value itself for anything else.
template <typename Output>
using Owned = typename call_detail::Owner<Output>::Type;

// Calls a member that gives nothing back. A missing object is a failure like any other.
template <typename Interface, typename... Parameters, typename... Inputs>
void Call(const Reference<Interface>& object, HRESULT (Interface::*member)(Parameters...),
          Inputs... inputs) {
    CheckResult(object ? (object.Get()->*member)(inputs...) : E_POINTER);
}

// Calls a member whose last parameter is its output, and returns that.
template <typename Interface, typename... Parameters, typename... Inputs>
auto Get(const Reference<Interface>& object, HRESULT (Interface::*member)(Parameters...),
         Inputs... inputs) {
    using Owner = call_detail::Owner<call_detail::OutputOf<Parameters...>>;
    typename Owner::Type output{};
    Call(object, member, inputs..., Owner::Put(output));
    return output;
}

}  // namespace orv
