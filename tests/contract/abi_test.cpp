// Compares the declarations in src/platform/abi with the facts in tests/abi: identifiers, vtable
// slots, parameters, enumerators and class names.
#include <gtest/gtest.h>

#include <string>

#include "abi/slots.h"
#include "platform/abi/advertisement.h"
#include "platform/abi/bluetooth.h"

namespace orv {
namespace {

struct Slot {
    std::string member;
    int expected, actual;
    bool sameParameters;
};
template <typename Expected>
struct Same {};
template <typename Member, typename Expected>
Slot SlotRow(const char* interface, const char* name, int slot, Member member, Same<Expected>) {
    return {std::string(interface) + "." + name, slot, orv::SlotOf(member),
            std::is_same_v<Member, Expected>};
}

struct Interface {
    const char* name;
    int expected, actual;
};

struct Identifier {
    const char* name;
    GUID expected, actual;
};

struct Enumerator {
    std::string name;
    INT64 expected, actual;
    bool isInt32;
};
template <typename Enumeration>
Enumerator EnumeratorRow(const char* enumeration, const char* name, INT64 value,
                         Enumeration actual) {
    return {std::string(enumeration) + "." + name, value, static_cast<INT64>(actual),
            std::is_same_v<std::underlying_type_t<Enumeration>, INT32>};
}

// The name of a runtime class, or null if the library does not request its factory.
template <typename Class, typename = void>
constexpr const char16_t* NameOf = nullptr;
template <typename Class>
constexpr const char16_t* NameOf<Class, std::void_t<decltype(Class::Name)>> = Class::Name;

struct RuntimeClass {
    const char* text;
    std::u16string expected;
    const char16_t* actual;
    GUID expectedDefault, actualDefault;
};
template <typename Class>
RuntimeClass ClassRow(const char* text, const char16_t* name, const GUID& defaultInterface) {
    return {text, name, NameOf<Class>, defaultInterface, IidOf<typename Class::DefaultInterface>};
}

#include "abi_facts.inc"

TEST(RuntimeAbi, EachMethodHasItsSlotAndParameters) {
    for (const Slot& row : SlotRows) {
        EXPECT_EQ(row.actual, row.expected) << row.member << " is in the wrong slot";
        EXPECT_TRUE(row.sameParameters) << row.member << " has other parameters";
    }
}

TEST(RuntimeAbi, NoInterfaceHasSlotsBehindItsLastMethod) {
    for (const Interface& row : InterfaceRows) {
        EXPECT_EQ(row.actual, row.expected) << row.name << " has another number of slots";
    }
}

TEST(RuntimeAbi, InterfacesAndInstancesHaveTheirIdentifiers) {
    for (const Identifier& row : IdentifierRows) {
        EXPECT_TRUE(row.actual == row.expected) << row.name << " has another identifier";
    }
}

TEST(RuntimeAbi, EnumeratorsHaveTheirValues) {
    for (const Enumerator& row : EnumeratorRows) {
        EXPECT_EQ(row.actual, row.expected) << row.name << " has another value";
        EXPECT_TRUE(row.isInt32) << row.name << " has another size or sign";
    }
}

TEST(RuntimeAbi, ClassesHaveTheirNamesAndDefaultInterfaces) {
    for (const RuntimeClass& row : RuntimeClassRows) {
        EXPECT_TRUE(!row.actual || row.actual == row.expected) << row.text << " has another name";
        EXPECT_TRUE(row.actualDefault == row.expectedDefault)
            << row.text << " has another default interface";
    }
}

}  // namespace
}  // namespace orv
