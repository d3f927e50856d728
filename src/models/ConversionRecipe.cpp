#include "models/ConversionRecipe.h"

namespace kestrine {

ConversionRecipe usualRecipe() {
    constexpr float usualQuality = 0.8F;
    return {.upright = UprightRule::always,
            .format = {FormatRule::Choice::ofSource},
            .quality = usualQuality,
            .exif = ExifSelection::withoutOwner,
            .place = {.keepsExtension = true}};
}

} // namespace kestrine
