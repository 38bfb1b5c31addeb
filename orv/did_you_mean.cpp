#include "orv/did_you_mean.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace orv {

namespace {

// Returns how many letters to insert, remove, replace or swap with a neighbour to get `other`.
std::size_t Distance(std::string_view one, std::string_view other) {
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last(other.size() + 1);
    std::iota(last.begin(), last.end(), 0U);
    for (std::size_t i = 1; i <= one.size(); ++i) {
        std::vector<std::size_t> now(other.size() + 1, i);
        for (std::size_t j = 1; j <= other.size(); ++j) {
            now[j] = std::min({last[j] + 1, now[j - 1] + 1,
                               last[j - 1] + (one[i - 1] == other[j - 1] ? 0U : 1U)});
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
                now[j] = std::min(now[j], beforeLast[j - 2] + 1);
            }
        }
        beforeLast = std::exchange(last, std::move(now));
    }
    return last.back();
}

std::string NearestWord(std::string_view typed, const std::vector<std::string>& words) {
    std::string nearest;
    std::size_t least = typed.size() / 2 + 1;  // words at a larger distance have little in common
    for (const std::string& word : words) {
        const std::size_t distance = Distance(typed.substr(0, 2 * word.size()), word);
        if (distance < least) {
            least = distance;
            nearest = word;
        }
    }
    return nearest;
}

}  // namespace

std::string DidYouMean(std::string_view typed, const std::vector<std::string>& words,
                       const char* prefix) {
    const std::string nearest = NearestWord(typed, words);
    return nearest.empty() ? "." : ". Did you mean " + (prefix + nearest) + "?";
}

}  // namespace orv
