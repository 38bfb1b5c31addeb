#include "runtimes/simulated/scenario/tree.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

namespace orv::simulated {

namespace {

using Json = nlohmann::json;

// Maximum depth of nested values, to limit the recursion of destructors.
constexpr std::size_t DeepestNesting = 16;
// Maximum number of fields in an object, because each field is compared with all others.
constexpr std::size_t MostFields = 64;
// Maximum number of values in a scenario, to limit memory.
constexpr std::size_t MostValues = 2'000'000;

// Tracks the line of the last token, which is the line of the last character that is not white
// space. This also holds after a number, where the parser reads one more character, which is white
// space or on the same line.
struct Reading {
    int line = 1;
    int lineOfToken = 1;

    void Read(char c) {
        if (c == '\n') {
            ++line;
        } else if (c != ' ' && c != '\t' && c != '\r') {
            lineOfToken = line;
        }
    }
};

class CountingIterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* place, Reading& readingOfText)
        : position(place), reading(&readingOfText) {}

    reference operator*() const { return *position; }
    CountingIterator& operator++() {
        reading->Read(*position++);
        return *this;
    }
    bool operator==(const CountingIterator& other) const { return position == other.position; }
    bool operator!=(const CountingIterator& other) const { return position != other.position; }

  private:
    const char* position;
    Reading* reading;
};

// Builds the tree from the parser's events. The parser defines the names of the
// public functions.
class TreeBuilder {
  public:
    explicit TreeBuilder(const Reading& readingOfText) : reading(readingOfText) {}

    ScenarioValue TakeRoot() { return std::move(root); }

    bool null() { return Add(Value(ScenarioValue::Kind::Null)); }
    bool boolean(bool value) {
        ScenarioValue added = Value(ScenarioValue::Kind::Boolean);
        added.boolean = value;
        return Add(std::move(added));
    }
    bool number_integer(Json::number_integer_t value) {
        ScenarioValue added = Value(ScenarioValue::Kind::Number);
        added.number = value;
        return Add(std::move(added));
    }
    bool number_unsigned(Json::number_unsigned_t value) {
        if (value > INT64_MAX) {
            RefuseLarge();
        }
        return number_integer(static_cast<Json::number_integer_t>(value));
    }
    bool number_float(Json::number_float_t, const std::string& text) {
        if (text.find_first_of(".eE") == std::string::npos) {
            RefuseLarge();
        }
        Refuse(text + " is no whole number, a whole number would be right");
    }
    bool string(std::string& value) {
        ScenarioValue added = Value(ScenarioValue::Kind::Text);
        added.text = std::move(value);
        return Add(std::move(added));
    }
    [[noreturn]] bool binary(Json::binary_t&) { Refuse("is binary"); }

    bool start_object(std::size_t) { return Open(ScenarioValue::Kind::Object); }
    bool start_array(std::size_t) { return Open(ScenarioValue::Kind::List); }
    bool end_object() { return Close(); }
    bool end_array() { return Close(); }

    bool key(std::string& name) {
        std::vector<std::string>& keys = open.back()->keys;
        if (keys.size() == MostFields) {
            Refuse("has too many fields, " + std::to_string(MostFields) +
                   " at most would be right");
        }
        if (std::find(keys.begin(), keys.end(), name) != keys.end()) {
            keys.push_back(name);
            Refuse("stands here a second time, once would be right");
        }
        keys.push_back(std::move(name));
        return true;
    }

    [[noreturn]] bool parse_error(std::size_t, const std::string&, const Json::exception& error) {
        // The text has the form "[name] parse error at line 3, column 5: what". Only "what" is
        // kept, because the line is reported separately.
        const std::string text = error.what();
        const std::size_t column = text.find("column");
        const std::size_t start = column == std::string::npos ? column : text.find(": ", column);
        Refuse(start == std::string::npos ? text : text.substr(start + 2));
    }

  private:
    ScenarioValue Value(ScenarioValue::Kind kind) const {
        ScenarioValue value;
        value.kind = kind;
        value.line = reading.lineOfToken;
        return value;
    }

    bool Add(ScenarioValue value) {
        if (++values > MostValues) {
            Refuse("has too many values, " + std::to_string(MostValues) +
                   " at most in a scenario would be right");
        }
        if (open.empty()) {
            root = std::move(value);
        } else {
            open.back()->items.push_back(std::move(value));
        }
        return true;
    }

    bool Open(ScenarioValue::Kind kind) {
        if (open.size() == DeepestNesting) {
            Refuse("is nested too deeply, a depth of " + std::to_string(DeepestNesting) +
                   " at most would be right");
        }
        Add(Value(kind));
        open.push_back(open.empty() ? &root : &open.back()->items.back());
        return true;
    }

    bool Close() {
        open.pop_back();
        return true;
    }

    [[noreturn]] void RefuseLarge() const {
        Refuse("is too large, a number of at most 18 digits would be right");
    }

    [[noreturn]] void Refuse(const std::string& text) const {
        std::string field;
        for (const ScenarioValue* value : open) {
            if (value->kind == ScenarioValue::Kind::List) {
                const bool entered = value != open.back() && !value->items.empty();
                field = ItemOf(field, value->items.size() - (entered ? 1 : 0));
            } else if (!value->keys.empty()) {
                field = FieldIn(field, value->keys.back());
            }
        }
        throw ScenarioFault{reading.lineOfToken, field.empty() ? "scenario" : field, text};
    }

    const Reading& reading;
    ScenarioValue root;
    std::size_t values = 0;
    // The objects and lists that have not ended yet, from the root inwards. Only the items of the
    // last one grow, so these pointers stay valid.
    std::vector<ScenarioValue*> open;
};

}  // namespace

ScenarioValue ParseScenarioText(const std::string& text) {
    // Rejects a zero byte, because the parser would treat it as the end of the text.
    const std::size_t zero = text.find('\0');
    if (zero != std::string::npos) {
        const auto end = text.begin() + static_cast<std::ptrdiff_t>(zero);
        throw ScenarioFault{1 + static_cast<int>(std::count(text.begin(), end, '\n')), "scenario",
                            "has a byte of zero, UTF-8 text would be right"};
    }
    Reading reading;
    TreeBuilder builder(reading);
    const char* const begin = text.data();
    Json::sax_parse(CountingIterator(begin, reading),
                    CountingIterator(begin + text.size(), reading), &builder);
    return builder.TakeRoot();
}

std::string FieldIn(const std::string& owner, const std::string& key) {
    return owner.empty() ? key : owner + "." + key;
}

std::string ItemOf(const std::string& list, std::size_t index) {
    return list + "[" + std::to_string(index) + "]";
}

}  // namespace orv::simulated
