// CompareOptions: the options of `compare` that say which results are compared.
#pragma once

#include "kestrinectl/convert/ConvertOptions.h"
#include "models/ResizeSet.h"

#include <vector>

namespace kestrine {

struct CompareOptions {
    std::vector<std::string> setNames;
    std::vector<float> qualities; ///< in percent
    std::vector<std::string> formats;
    ConvertOptions look; ///< what all results have in common

    /// Adds the options to a command; it writes into this object, which must outlive the parsing.
    void addTo(CLI::App& command);

    /// The named sets, or the selected ones; none if the options describe the results. Throws CommandError.
    ResizeSets sets() const;

    /// Every combination of set, format, quality and size, once. The results are returned to the caller and
    /// have no EXIF data. Throws CommandError with status 2 for options that contradict each other and for
    /// too many combinations.
    ConversionRecipes recipes(const ResizeSets& sets) const;
};

} // namespace kestrine
