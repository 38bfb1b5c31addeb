#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv {

// Returns the end of a message about an unknown word: ". Did you mean WORD?" with the most similar
// of `words`, after `prefix`, or "." if none is similar enough.
std::string DidYouMean(std::string_view typed, const std::vector<std::string>& words,
                       const char* prefix = "");

}  // namespace orv
