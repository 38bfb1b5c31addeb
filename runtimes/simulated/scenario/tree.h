// The JSON text of a scenario as a tree of values with their line numbers.
#pragma once

#include <string>
#include <vector>

#include "platform/abi/base.h"

namespace orv::simulated {

struct ScenarioFault {
    int line;
    std::string field;  // path, such as "devices[1].signal"
    std::string text;
};

struct ScenarioValue {
    enum class Kind { Null, Boolean, Number, Text, List, Object };

    Kind kind = Kind::Null;
    int line = 1;
    bool boolean = false;
    INT64 number = 0;
    std::string text;
    std::vector<ScenarioValue> items;  // items of a list, or values of an object
    std::vector<std::string> keys;     // names of the values in an object
};

// Throws a ScenarioFault for malformed text and for numbers that are not integers.
ScenarioValue ParseScenarioText(const std::string& text);

// Return the path of a field in an object, or of an item in a list.
std::string FieldIn(const std::string& owner, const std::string& key);
std::string ItemOf(const std::string& list, std::size_t index);

}  // namespace orv::simulated
