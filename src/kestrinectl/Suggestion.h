// Suggestion: finds the word that a mistyped one probably means.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// The candidate that differs least from `word`, without leading dashes and case: one that begins with
/// `word`, or one in which at most a third of the letters are wrong, missing, added or swapped. nullopt when
/// there is no such candidate.
std::optional<std::string> nearestWord(const std::string& word, const std::vector<std::string>& candidates);

} // namespace kestrine
