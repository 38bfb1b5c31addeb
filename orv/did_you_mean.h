#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv {

// Returns the end of a message about an unknown word: ". Did you mean WORD?", or "." if none of
// `words` is similar. Puts `prefix` before WORD.
std::string DidYouMean(std::string_view typed, const std::vector<std::string>& words,
                       const char* prefix = "");

}  // namespace orv
