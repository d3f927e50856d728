// ConvertOptions: the options of `convert` that say what is made of a picture and where it goes.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

namespace kestrine {

/// The options as typed and checked (RecipeWords.h); those not given are absent.
struct ConvertOptions {
    std::optional<std::string> longest, width, height, percent, fit, cover;
    std::optional<std::string> gravity, pad, background;
    bool keepsSmall = false;
    std::optional<std::string> format;
    std::optional<float> quality; ///< in percent
    bool isLossless = false;
    bool isProgressive = false;
    std::optional<std::string> effort;
    std::optional<std::string> maxBytes;
    std::optional<bool> upright;
    std::optional<std::string> metadata, times, profile;
    bool skipsFitting = false;
    bool exif = false; ///< short for `metadata` "exif"
    bool replaces = false;
    std::optional<std::string> out;
    std::optional<std::string> name;

    /// Adds the options to a command; it writes into this object, which must outlive the parsing.
    void addTo(CLI::App& command);
    /// Only those that say what a result looks like, without its format and quality.
    void addLookTo(CLI::App& command);
};

/// Accepts the names of output formats. `alternative` ends the message for other words.
CLI::Validator formatOfResult(const std::string& alternative);

} // namespace kestrine
