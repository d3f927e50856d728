// SetImport: adds the sets of a JSON export to the stored ones.
#pragma once

#include "kestrinectl/sets/SetPlacement.h"

namespace kestrine {

struct SetImport {
    std::string path; ///< of the export; "-" for standard input
    NameConflicts conflicts;
    bool acceptsAnyName = false;

    /// Adds the options and the argument FILE to a command; it writes into this object, which must outlive
    /// the parsing.
    void addTo(CLI::App& command);

    /// Reads the export, changes the user's presets and prints notices and warnings. If it throws a
    /// CommandError, nothing was changed.
    void run() const;
};

} // namespace kestrine
