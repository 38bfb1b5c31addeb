// The declarations of src/platform/abi against the table of facts in tests/abi: identifiers, slots,
// parameters, enumerators and class names. A wrong one would call the wrong function of the system.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>

#include "platform/abi/advertisement.h"
#include "platform/abi/bluetooth.h"

namespace orv {
namespace {

// A pointer to a virtual member holds the offset of its slot in the table, plus one.
template <typename Member>
int SlotOf(Member member) {
    std::ptrdiff_t words[2];
    static_assert(sizeof(member) == sizeof(words));
    std::memcpy(words, &member, sizeof(words));
    return static_cast<int>((words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

// The next virtual function after those of `Interface` gets the slot behind its last one.
template <typename Interface>
struct Extended : Interface {
    virtual HRESULT BehindTheLastSlot() = 0;
};
template <typename Interface>
int SlotCount() {
    return orv::SlotOf(&Extended<Interface>::BehindTheLastSlot);
}

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

// A class has a name where the library asks for its factory.
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
