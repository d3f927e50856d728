// Suggestion: what a person who mistyped a word probably meant.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// The candidate that differs least from `word`, leading dashes and case aside: an extension of it, or one
/// that a third of its letters, wrong, missing, surplus or swapped, keep apart. Nothing when no candidate is
/// so near.
std::optional<std::string> nearestWord(const std::string& word, const std::vector<std::string>& candidates);

} // namespace kestrine
