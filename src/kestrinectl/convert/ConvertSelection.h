// ConvertSelection: the arguments and options that say which files are converted.
#pragma once

#include "kestrinectl/convert/ConvertInputs.h"
#include "kestrinectl/convert/ConvertOptions.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

namespace kestrine {

struct ConvertSelection {
    std::vector<std::string> files;
    ConvertSearch search;
    std::optional<std::string> list; ///< of further files
    bool listHasZeroBytes = false;
    bool allowsEmpty = false;

    /// Adds the options to a command, not the argument FILE; it writes into this object, which must outlive
    /// the parsing.
    void addTo(CLI::App& command);

    /// Once, after the parsing: reads the list and completes the search. Folders for results of stored sets
    /// and of this run (those that `options` name) are not searched. `command` is the name of the command,
    /// for messages. Throws CommandError, with status 2 if no file is named.
    void complete(const ResizeSets& storedSets, const ConvertOptions& options, const std::string& command);
};

} // namespace kestrine
