// Comparison: the results of several recipes for one picture, each measured against a lossless one.
#pragma once

#include "kestrinectl/compare/CellSums.h"
#include "kestrinectl/convert/ConvertInputs.h"
#include "models/ConversionRecipe.h"
#include "platform/foundation/NSData.h"

#include <memory>

namespace kestrine {

/// A result, or the reference of results: what the same recipe gives as PNG, without any loss.
struct ComparedImage {
    std::string label;           ///< "Web: JPEG, quality 80", or "Original"; not escaped; may not be UTF-8
    const OutputFormat* format;  ///< never null
    std::uint32_t width, height; ///< in pixels
    std::uint64_t bytes = 0;     ///< the length of the file
    std::shared_ptr<const NSData> file; ///< null once nothing more is made of it
    bool isReference = false;
    std::optional<double> similarity; ///< to the reference (StructuralSimilarity.h); none if not measured
};

struct Comparison {
    ConvertResult conversion;            ///< of the picture by all recipes: failures and warnings
    std::string_view format;             ///< of the original; "" if it cannot be read
    std::uint32_t width = 0, height = 0; ///< of the original, after turning it upright
    std::uint64_t bytes = 0;
    CellSums loss, detail; ///< of all results that are as large as the first, and of their original
    std::vector<ComparedImage> images; ///< each reference stands before its first result

    bool hasResults() const { return !images.empty(); }
};

/// Converts the picture as `recipes` say, each alone, so that a result has the bytes that `convert` would
/// give it. What the current PictureEngine isolates is isolated: this process reads no pixels but those that
/// it is given as rows.
Comparison compared(const ConvertInput& input, const ConversionRecipes& recipes);

} // namespace kestrine
