// The JSON text of a scenario as a tree whose every value knows the line that it stands on.
#pragma once

#include <string>
#include <vector>

#include "platform/abi/base.h"

namespace orv::simulated {

// What is wrong with a scenario, and where.
struct ScenarioFault {
    int line;
    std::string field;  // such as "devices[1].signal"
    std::string text;
};

struct ScenarioValue {
    enum class Kind { Null, Boolean, Number, Text, List, Object };

    Kind kind = Kind::Null;
    int line = 1;
    bool boolean = false;
    INT64 number = 0;
    std::string text;
    std::vector<ScenarioValue> items;  // of a list or an object
    std::vector<std::string> keys;     // of an object, one for each item
};

// Throws a ScenarioFault. Numbers are whole ones, since a scenario counts and measures in no
// others.
ScenarioValue ParseScenarioText(const std::string& text);

// The path of a value inside another.
std::string FieldIn(const std::string& owner, const std::string& key);
std::string ItemOf(const std::string& list, std::size_t index);

}  // namespace orv::simulated
