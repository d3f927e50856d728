// RecipeDigest: a number for what recipes make, by which results of earlier runs are recognised.
#pragma once

#include "models/ConversionRecipe.h"

#include <string>

namespace kestrine {

/// Rises whenever the same picture and recipe give other bytes than before, so that results are made again.
inline constexpr int outputVersion = 1;

/// All fields of the recipes as a string: equal for equal recipes, and different for others.
std::string textOf(const ConversionRecipes& recipes);

} // namespace kestrine
