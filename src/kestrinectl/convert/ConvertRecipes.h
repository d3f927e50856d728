// ConvertRecipes: what a run of `convert` makes of each file, decided once from its options and sets.
#pragma once

#include "kestrinectl/convert/ConvertOptions.h"
#include "models/ResizeSet.h"

namespace kestrine {

/// Whether the options say what a result looks like, so that no set is needed.
bool describeResult(const ConvertOptions& options);

/// The recipes of `sets` with the changes that the options make to them for this run; or, without sets, that
/// of the options alone. Results of options are exact pixels. Throws CommandError with status 2 for options
/// that contradict each other, and when the results have no place.
ConversionRecipes recipesFor(const ConvertOptions& options, const ResizeSets& sets);

/// The same for one picture from standard input, whose result goes to standard output.
ConversionRecipe recipeForStream(const ConvertOptions& options, const ResizeSets& sets);

/// The same for results that are returned to the caller and not written; at least one.
ConversionRecipes recipesToReturn(const ConvertOptions& options, const ResizeSets& sets);

} // namespace kestrine
