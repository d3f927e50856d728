// What the results of a comparison are called.
#pragma once

#include "kestrinectl/compare/Comparison.h"

namespace kestrine {

/// "Web: JPEG, quality 80" for a set, else "JPEG, quality 80"; "PNG" for a format without a quality.
std::string labelOf(const ConversionRecipe& recipe, const OutputFormat& format);

/// Adds ", 480 x 320" to every label if the images have different sizes.
void addSizesToLabels(std::vector<ComparedImage>& images);

} // namespace kestrine
