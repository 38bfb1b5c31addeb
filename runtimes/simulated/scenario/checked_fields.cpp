#include "runtimes/simulated/scenario/checked_fields.h"

#include <algorithm>

namespace orv::simulated {

namespace {

using Kind = ScenarioValue::Kind;

std::string Joined(std::initializer_list<const char*> names) {
    std::string text;
    for (const char* name : names) {
        text.append(text.empty() ? "" : ", ").append(name);
    }
    return text;
}

std::string Shown(const ScenarioValue& value) {
    switch (value.kind) {
        case Kind::Null:
            return "null";
        case Kind::Boolean:
            return value.boolean ? "true" : "false";
        case Kind::Number:
            return std::to_string(value.number);
        case Kind::Text:
            return "\"" + value.text + "\"";
        case Kind::List:
            return "a list";
        default:
            return "an object";
    }
}

}  // namespace

void ScenarioField::Refuse(const std::string& wrong, const std::string& right) const {
    throw ScenarioFault{value->line, path.empty() ? "scenario" : path,
                        wrong + ", " + right + " would be right"};
}

const ScenarioValue& ScenarioField::Expect(Kind kind, const char* right) const {
    if (value->kind != kind) {
        Refuse("is " + Shown(*value), right);
    }
    return *value;
}

bool ScenarioField::Boolean() const {
    return Expect(Kind::Boolean, "true or false").boolean;
}

INT32 ScenarioField::Number(INT32 least, INT32 most) const {
    const INT64 number = Expect(Kind::Number, "a number").number;
    if (number < least || number > most) {
        Refuse("is " + std::to_string(number),
               "a number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return static_cast<INT32>(number);
}

const std::string& ScenarioField::Text() const {
    return Expect(Kind::Text, "a text").text;
}

template <typename Parse>
auto ScenarioField::Parsed(Parse parse, const char* right) const {
    auto parsed = parse(Expect(Kind::Text, right).text);
    if (!parsed) {
        Refuse("is " + Shown(*value), right);
    }
    return *parsed;
}

UINT64 ScenarioField::Address() const {
    constexpr const char* Right = "an address such as \"A0:B1:C2:D3:E4:F5\", not all zeros,";
    const UINT64 address = Parsed(ParseAddress, Right);
    if (address == 0) {
        Refuse("is " + Shown(*value), Right);
    }
    return address;
}

GUID ScenarioField::Uuid() const {
    return Parsed(ParseUuid, "a UUID of 36 characters");
}

std::vector<BYTE> ScenarioField::Bytes() const {
    return Parsed(ParseBytes, "two hexadecimal digits for each byte");
}

HRESULT ScenarioField::Code() const {
    return Parsed(ParseCode, "a failure code such as \"0x80004005\"");
}

INT32 ScenarioField::OneOf(std::initializer_list<Word> words) const {
    std::string right;
    for (const Word& word : words) {
        if (value->kind == Kind::Text && value->text == word.text) {
            return word.value;
        }
        right.append(right.empty() ? "one of " : ", ").append(word.text);
    }
    Refuse("is " + Shown(*value), right);
}

std::vector<ScenarioField> ScenarioField::Items() const {
    std::vector<ScenarioField> items;
    for (const ScenarioValue& item : Expect(Kind::List, "a list").items) {
        items.emplace_back(item, ItemOf(path, items.size()));
    }
    return items;
}

ScenarioObject::ScenarioObject(const ScenarioField& fieldOfObject,
                               std::initializer_list<const char*> known)
    : field(fieldOfObject) {
    const ScenarioValue& object = field.Expect(Kind::Object, "an object");
    for (std::size_t i = 0; i < object.keys.size(); ++i) {
        const std::string& key = object.keys[i];
        if (std::none_of(known.begin(), known.end(),
                         [&](const char* name) { return key == name; })) {
            ScenarioField(object.items[i], FieldIn(field.path, key))
                .Refuse("is unknown here", "one of " + Joined(known));
        }
    }
}

std::optional<ScenarioField> ScenarioObject::Find(const char* name) const {
    const std::vector<std::string>& keys = field.value->keys;
    const auto found = std::find(keys.begin(), keys.end(), name);
    if (found == keys.end()) {
        return std::nullopt;
    }
    return ScenarioField(field.value->items[static_cast<std::size_t>(found - keys.begin())],
                         FieldIn(field.path, name));
}

ScenarioField ScenarioObject::Get(const char* name) const {
    const std::optional<ScenarioField> found = Find(name);
    if (!found) {
        field.Refuse(std::string("lacks ") + name, std::string("an object with ") + name);
    }
    return *found;
}

bool ScenarioObject::Boolean(const char* name, bool standard) const {
    const std::optional<ScenarioField> found = Find(name);
    return found ? found->Boolean() : standard;
}

INT32 ScenarioObject::Number(const char* name, INT32 standard, INT32 least, INT32 most) const {
    const std::optional<ScenarioField> found = Find(name);
    return found ? found->Number(least, most) : standard;
}

std::vector<ScenarioField> ScenarioObject::Items(const char* name) const {
    const std::optional<ScenarioField> found = Find(name);
    return found ? found->Items() : std::vector<ScenarioField>();
}

const char* ScenarioObject::OneOf(std::initializer_list<const char*> names) const {
    const char* there = nullptr;
    for (const char* name : names) {
        if (Has(name)) {
            if (there != nullptr) {
                field.Refuse(std::string("has both ") + there + " and " + name,
                             "one of " + Joined(names));
            }
            there = name;
        }
    }
    if (there == nullptr) {
        field.Refuse("lacks a field", "one of " + Joined(names));
    }
    return there;
}

}  // namespace orv::simulated
