// Descriptions of sets in words.
#pragma once

#include "models/ResizeSet.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// A few words, for one line of a list: "longer side 1200, JPEG 70 %".
std::string summary(const ResizeSet& set);

/// Whole sentences, one per entry: scaling, turning, format and place, then surprising effects, each
/// of these beginning with "Note:".
std::vector<std::string> description(const ResizeSet& set);

/// The first of these sentences.
std::string scalingSentence(const ResizeSet& set);

/// The note about the longer side of a result; nullopt if it has the stored length.
std::optional<std::string> noteOnLongerSide(const ResizeSet& set);

} // namespace kestrine
