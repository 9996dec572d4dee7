#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velto::app {

// Edits between two texts, a swap of neighbours counting as one edit: the usual slips.
std::size_t editDistance(const std::string& a, const std::string& b);

// The word of `words` that `typed` most likely meant: the nearest within a slip or two (about
// a third of its letters), else the one word that begins with it; nullopt when none is close.
std::optional<std::string> closestWord(const std::string& typed,
                                       const std::vector<std::string>& words);

// "; did you mean 'WORD'?" for the closest word, or "" when none is close.
std::string didYouMean(const std::string& typed, const std::vector<std::string>& words);

}  // namespace velto::app
