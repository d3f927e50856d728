#include "kestrinectl/compare/ResultLabels.h"

#include "kestrinectl/convert/ConvertOutcome.h"
#include "kestrinectl/text/PlainNumber.h"
#include "kestrinectl/text/ShownNumbers.h"

#include <algorithm>
#include <cmath>

namespace kestrine {

namespace {

/// How exact the result is: ", quality 80", or "" for a format without a choice.
std::string exactnessOf(const ConversionRecipe& recipe, const OutputFormat& format) {
    if (recipe.isLossless && format.hasLossless)
        return ", lossless";
    if (!format.hasQuality)
        return "";
    if (recipe.maxBytes != 0)
        return ", at most " + shownBytes(recipe.maxBytes);
    return ", quality " + plainNumber(std::round(recipe.quality * 100));
}

} // namespace

std::string labelOf(const ConversionRecipe& recipe, const OutputFormat& format) {
    const std::optional<std::string> set = setOf(recipe);
    return (set ? *set + ": " : "") + std::string(format.title) + exactnessOf(recipe, format);
}

void addSizesToLabels(std::vector<ComparedImage>& images) {
    const auto differs = [&](const ComparedImage& image) {
        return image.width != images.front().width || image.height != images.front().height;
    };
    if (std::ranges::none_of(images, differs))
        return;
    for (ComparedImage& image : images)
        image.label += ", " + std::to_string(image.width) + " x " + std::to_string(image.height);
}

} // namespace kestrine
