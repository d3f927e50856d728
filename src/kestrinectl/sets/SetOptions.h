// SetOptions: the options that describe a set.
#pragma once

#include "models/ResizeSet.h"

#include <CLI/CLI.hpp>
#include <array>
#include <optional>
#include <string>

namespace kestrine {

/// The options given on the command line; those not given are absent and change nothing.
struct SetOptions {
    static constexpr std::size_t switchCount = 5;

    std::optional<float> width;
    std::optional<float> height;
    std::optional<float> percent;
    std::optional<float> longest;
    bool keepsSize = false;
    std::optional<std::string> format;
    std::optional<float> quality;
    /// The values of the switches, in the order of the table in SetOptions.cpp.
    std::array<std::optional<bool>, switchCount> switches;

    /// Adds the options to a command; it writes into this object, which must outlive the parsing. The help
    /// names the default values where a new set is made.
    void addTo(CLI::App& command, bool isForNewSet);

    /// Stores the options given in `set`.
    void applyTo(ResizeSet& set) const;
};

} // namespace kestrine
