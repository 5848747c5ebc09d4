#include "vocabulary/Nearest.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace onvifctl {

namespace {

std::string Lowered(std::string_view text) {
    std::string lowered(text);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lowered;
}

/// How many letters have to be inserted, removed or replaced, or neighbours swapped.
std::size_t Distance(const std::string& one, const std::string& other) {
    std::vector<std::size_t> before;
    std::vector<std::size_t> above;
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= one.size(); ++i) {
        before = std::move(above);
        above = row;
        row[0] = i;
        for (std::size_t j = 1; j <= other.size(); ++j) {
            row[j] = std::min({above[j] + 1, row[j - 1] + 1,
                               above[j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
                row[j] = std::min(row[j], before[j - 2] + 1);
            }
        }
    }
    return row.back();
}

}  // namespace

std::string Nearest(std::string_view typed, const std::vector<std::string>& words) {
    constexpr std::size_t kLongest = 64;  // no word is as long, and the work is its square
    constexpr std::size_t kLettersPerFault = 4;
    const std::string wanted = Lowered(typed.substr(0, kLongest));
    std::size_t least = (wanted.size() + kLettersPerFault - 1) / kLettersPerFault;
    std::string nearest;
    for (const std::string& word : words) {
        const std::size_t distance = Distance(wanted, Lowered(word));
        if (distance < least || (distance == least && nearest.empty())) {
            least = distance;
            nearest = word;
        }
    }
    return nearest;
}

std::string DidYouMean(std::string_view typed, const std::vector<std::string>& words) {
    const std::string nearest = Nearest(typed, words);
    return nearest.empty() ? "" : ": did you mean " + nearest + "?";
}

}  // namespace onvifctl
