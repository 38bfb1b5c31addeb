#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv {

// Returns the word that is most similar to `typed`, or an empty text if none is similar enough.
std::string NearestWord(std::string_view typed, const std::vector<std::string>& words);

}  // namespace orv
