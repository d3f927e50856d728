#include "models/ConversionRecipe.h"

#include <algorithm>

namespace kestrine {

bool replacesFiles(const ConversionRecipes& recipes) {
    return recipes.size() == 1 && recipes.front().place.replaces;
}

bool numbersNames(const ConversionRecipes& recipes) {
    return std::ranges::any_of(recipes, [](const ConversionRecipe& recipe) {
        return recipe.place.name && recipe.place.name->uses(NameTemplate::Field::n);
    });
}

ConversionRecipe usualRecipe() {
    constexpr float usualQuality = 0.8F;
    return {.upright = UprightRule::always,
            .format = {FormatRule::Choice::ofSource},
            .quality = usualQuality,
            .exif = ExifSelection::withoutOwner,
            .place = {.keepsExtension = true}};
}

} // namespace kestrine
