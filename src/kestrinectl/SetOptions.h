// SetOptions: the options with which a person describes a set.
#pragma once

#include "models/ResizeSet.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

namespace kestrine {

/// What was said on the command line; what was not said is absent and stays as it is.
struct SetOptions {
    std::optional<float> width;
    std::optional<float> height;
    std::optional<float> percent;
    std::optional<float> longest;
    bool keepsSize = false;
    std::optional<std::string> format;
    std::optional<float> quality;
    std::optional<bool> exif;
    std::optional<bool> convertsResolution;
    std::optional<bool> rotates;
    std::optional<bool> highQuality;
    std::optional<bool> replaces;
    std::optional<std::string> name;

    /// Adds the options to a command; it writes into this object, which must outlive the parsing.
    void addTo(CLI::App& command);

    /// Changes `set` as said.
    void applyTo(ResizeSet& set) const;
};

} // namespace kestrine
