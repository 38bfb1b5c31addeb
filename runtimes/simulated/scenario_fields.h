// The values of a scenario, read as what they are meant to be. Everything here throws a
// ScenarioFault that says what would be right.
#pragma once

#include <functional>
#include <initializer_list>
#include <optional>

#include "runtimes/simulated/scenario_text.h"
#include "runtimes/simulated/texts.h"

namespace orv::simulated {

// A value and the path under which faults name it. Valid as long as the tree.
class ScenarioField {
  public:
    ScenarioField(const ScenarioValue& valueOfField, std::string pathOfField)
        : value(&valueOfField), path(std::move(pathOfField)) {}

    bool IsNull() const { return value->kind == ScenarioValue::Kind::Null; }
    bool IsText() const { return value->kind == ScenarioValue::Kind::Text; }

    bool Boolean() const;
    INT32 Number(INT32 least, INT32 most) const;
    const std::string& Text() const;
    UINT64 Address() const;
    GUID Uuid() const;
    std::vector<BYTE> Bytes() const;
    HRESULT Code() const;

    struct Word {
        const char* text;
        INT32 value;
    };
    // One of these words.
    INT32 OneOf(std::initializer_list<Word> words) const;

    std::vector<ScenarioField> Items() const;

    [[noreturn]] void Refuse(const std::string& wrong, const std::string& right) const;

  private:
    friend class ScenarioObject;
    const ScenarioValue& Expect(ScenarioValue::Kind kind, const char* right) const;
    // The text as what `parse` makes of it.
    template <typename Parse>
    auto Parsed(Parse parse, const char* right) const;

    const ScenarioValue* value;
    std::string path;
};

// An object, all of whose fields are among `known`.
class ScenarioObject {
  public:
    ScenarioObject(const ScenarioField& fieldOfObject, std::initializer_list<const char*> known);

    bool Has(const char* name) const { return Find(name).has_value(); }
    std::optional<ScenarioField> Find(const char* name) const;
    ScenarioField Get(const char* name) const;  // must be there

    bool Boolean(const char* name, bool standard) const;
    INT32 Number(const char* name, INT32 standard, INT32 least, INT32 most) const;
    // The items of a list; none when it is not there.
    std::vector<ScenarioField> Items(const char* name) const;
    // The one of these fields that is there.
    const char* OneOf(std::initializer_list<const char*> names) const;

    const ScenarioField& Field() const { return field; }

  private:
    ScenarioField field;
};

}  // namespace orv::simulated
