#include "app/session/spelling.h"

#include <algorithm>

namespace velto::app {

std::size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> d(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i)
        d[i][0] = i;
    for (std::size_t j = 0; j <= b.size(); ++j)
        d[0][j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i)
        for (std::size_t j = 1; j <= b.size(); ++j) {
            d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1,
                                d[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
        }
    return d[a.size()][b.size()];
}

std::optional<std::string> closestWord(const std::string& typed,
                                       const std::vector<std::string>& words) {
    if (typed.empty()) return std::nullopt;
    const std::size_t allowed = std::max<std::size_t>(1, (typed.size() + 1) / 3);
    std::optional<std::string> best;
    std::size_t bestDistance = allowed + 1;
    for (const std::string& word : words)
        if (const std::size_t d = editDistance(typed, word); d < bestDistance) {
            bestDistance = d;
            best = word;
        }
    if (best) return best;
    std::vector<std::string> beginning;
    for (const std::string& word : words)
        if (typed.size() >= 2 && word.starts_with(typed)) beginning.push_back(word);
    if (beginning.size() == 1) return beginning.front();
    return std::nullopt;
}

std::string didYouMean(const std::string& typed, const std::vector<std::string>& words) {
    const auto word = closestWord(typed, words);
    return word ? "; did you mean '" + *word + "'?" : "";
}

}  // namespace velto::app
