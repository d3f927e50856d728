// Files that need no conversion.
#pragma once

#include "models/RecipeConversion.h"

namespace kestrine {

/// Whether `file`, which is open and whose loaded picture is `image`, is already as the recipe asks: it has
/// the format, is not larger, stands upright and holds no more metadata. `bytes` is its length.
bool fitsAlready(const ConversionRecipe& recipe, const PlannedResult& plan, const PictureFile& file,
                 const NSImage& image, std::uint64_t bytes);

} // namespace kestrine
