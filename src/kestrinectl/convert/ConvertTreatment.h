// ConvertTreatment: the options that say how each file is treated: sets, what is made, and what is refused.
#pragma once

#include "kestrinectl/convert/ConvertOptions.h"
#include "kestrinectl/sets/PresetStore.h"
#include "models/ResizeJob.h"
#include "platform/coregraphics/RowFormat.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace kestrine {

struct ConvertTreatment {
    std::vector<std::string> setNames;
    ConvertOptions options;
    bool acceptsDamaged = false;
    bool firstOnly = false;
    std::uint64_t maxPixels = defaultMaximumPixels;

    /// Adds the options to a command; it writes into this object, which must outlive the parsing.
    void addTo(CLI::App& command);
    /// The rest of the options, which limit what a file may cost.
    void addLimitsTo(CLI::App& command);

    /// The stored sets. If no set affects the result, sets that cannot be read only cause a warning.
    PresetStore presets() const;

    /// The sets to apply; none if the options describe the result.
    ResizeSets sets(const PresetStore& store) const;

    JobPolicy policy() const;
};

} // namespace kestrine
