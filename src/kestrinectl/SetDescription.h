// What a set does, in words.
#pragma once

#include "models/ResizeSet.h"

#include <string>
#include <vector>

namespace kestrine {

/// A number as people write it: 1200, 62.5.
std::string plainNumber(float value);

/// A few words for a line of a list: "longer side 1200, JPEG 70 %".
std::string summary(const ResizeSet& set);

/// Whole sentences, one an entry: scaling, turning, format, place; and what might surprise, each begun with
/// "Note:".
std::vector<std::string> description(const ResizeSet& set);

} // namespace kestrine
