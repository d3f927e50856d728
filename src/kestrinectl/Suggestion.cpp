#include "kestrinectl/Suggestion.h"

#include <algorithm>
#include <cctype>

namespace kestrine {

namespace {

std::string comparable(const std::string& word) {
    std::string letters = word.substr(std::min(word.find_first_not_of('-'), word.size()));
    std::ranges::transform(letters, letters.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return letters;
}

/// How many letters must be replaced, removed, inserted or swapped with their neighbour.
std::size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> cost(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i)
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                cost[i][j] = i + j;
                continue;
            }
            const bool isSame = a[i - 1] == b[j - 1];
            cost[i][j] =
                std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, cost[i - 1][j - 1] + (isSame ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
        }
    return cost[a.size()][b.size()];
}

bool isNear(const std::string& typed, const std::string& candidate, std::size_t distance) {
    const bool isBeginning = typed.size() >= 2 && candidate.starts_with(typed);
    return isBeginning
           || (distance < typed.size() && distance <= std::max<std::size_t>(1, candidate.size() / 3));
}

} // namespace

std::optional<std::string> nearestWord(const std::string& word, const std::vector<std::string>& candidates) {
    constexpr std::size_t longestWord = 100;
    const std::string typed = comparable(word);
    if (typed.empty() || typed.size() > longestWord)
        return std::nullopt;
    std::optional<std::string> nearest;
    std::size_t smallest = 0;
    for (const std::string& candidate : candidates) {
        const std::string letters = comparable(candidate);
        const std::size_t distance = editDistance(typed, letters);
        if (isNear(typed, letters, distance) && (!nearest || distance < smallest)) {
            nearest = candidate;
            smallest = distance;
        }
    }
    return nearest;
}

} // namespace kestrine
