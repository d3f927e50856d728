// UpdateOptions: the options of `convert` about results of earlier runs.
#pragma once

#include "kestrinectl/convert/UpdateManifest.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

namespace kestrine {

struct UpdateOptions {
    bool isOn = false;
    bool remakesAll = false;
    bool waits = true;
    std::optional<std::string> manifest;

    /// Adds the options to a command; it writes into this object, which must outlive the parsing.
    void addTo(CLI::App& command);

    /// Gives the folders of results their paths without links, by which they are remembered.
    void changePlaces(ConversionRecipes& recipes) const;

    /// The manifest for results in `outFolder` ("" for results beside their originals); null if the options
    /// do not ask for one, or if there is none yet and `isDryRun`. Throws CommandError, with status 2 for
    /// options that contradict each other.
    std::unique_ptr<UpdateManifest> open(const ConversionRecipes& recipes, const std::string& outFolder,
                                         bool isDryRun) const;
};

} // namespace kestrine
