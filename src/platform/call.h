#pragma once

#include <tuple>
#include <type_traits>

#include "platform/failure.h"
#include "platform/reference.h"
#include "platform/runtime_string.h"

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

// The type that owns an output value: Reference for an interface, RuntimeString for a string,
// otherwise the type of the value.
template <typename Output>
using Owned = typename call_detail::Owner<Output>::Type;

// Calls a member function without output. Throws if it fails or if `object` is null.
template <typename Interface, typename... Parameters, typename... Inputs>
void Call(const Reference<Interface>& object, HRESULT (Interface::*member)(Parameters...),
          Inputs... inputs) {
    CheckResult(object ? (object.Get()->*member)(inputs...) : E_POINTER);
}

// Like Call, for a member function whose last parameter is its output. Returns the output.
template <typename Interface, typename... Parameters, typename... Inputs>
auto Get(const Reference<Interface>& object, HRESULT (Interface::*member)(Parameters...),
         Inputs... inputs) {
    using Owner = call_detail::Owner<call_detail::OutputOf<Parameters...>>;
    typename Owner::Type output{};
    Call(object, member, inputs..., Owner::Put(output));
    return output;
}

}  // namespace orv
