// Reads and checks the values of a scenario. If a value is wrong, each function throws a
// ScenarioFault that states the correct form.
#pragma once

#include <functional>
#include <initializer_list>
#include <optional>

#include "runtimes/simulated/scenario/parse.h"
#include "runtimes/simulated/scenario/tree.h"

namespace orv::simulated {

// A value of a scenario, with its path for error messages. The value must outlive this object.
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
    // Returns the value that `words` assigns to the field's text. Throws if `words` lacks the text.
    INT32 OneOf(std::initializer_list<Word> words) const;

    std::vector<ScenarioField> Items() const;

    [[noreturn]] void Refuse(const std::string& wrong, const std::string& right) const;

  private:
    friend class ScenarioObject;
    const ScenarioValue& Expect(ScenarioValue::Kind kind, const char* right) const;
    // Converts the text with `parse`. Throws if that fails; `right` describes a correct text.
    template <typename Parse>
    auto Parsed(Parse parse, const char* right) const;

    const ScenarioValue* value;
    std::string path;
};

// A JSON object. The constructor throws if the object has a field that is not in `known`.
class ScenarioObject {
  public:
    ScenarioObject(const ScenarioField& fieldOfObject, std::initializer_list<const char*> known);

    bool Has(const char* name) const { return Find(name).has_value(); }
    std::optional<ScenarioField> Find(const char* name) const;
    ScenarioField Get(const char* name) const;  // throws if the field is missing

    bool Boolean(const char* name, bool standard) const;
    INT32 Number(const char* name, INT32 standard, INT32 least, INT32 most) const;
    // Returns the items of a list, or an empty vector if the field is missing.
    std::vector<ScenarioField> Items(const char* name) const;
    // Returns the one of `names` that is a field of the object. Throws if none or several are.
    const char* OneOf(std::initializer_list<const char*> names) const;

    const ScenarioField& Field() const { return field; }

  private:
    ScenarioField field;
};

}  // namespace orv::simulated
