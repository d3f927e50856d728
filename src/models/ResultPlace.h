// ResultPlace: where a result goes.
#pragma once

#include "models/NameTemplate.h"
#include "platform/foundation/text/NSString.h"

#include <optional>

namespace kestrine {

struct ResultPlace {
    /// Whether the result takes the place of the original, which goes to the trash. Only for a job with a
    /// single recipe; the folders below are for results of jobs with several.
    bool replaces = false;
    /// Whether the result goes to the caller, who gets the bytes in the outcome; nothing is written.
    bool isReturned = false;
    OptionalString base;      ///< absolute; nil for the given folder, or else the one that holds the file
    OptionalString subfolder; ///< below the base
    bool keepsTree = true;    ///< whether a file's place below the given folder is kept below the result
    std::optional<NameTemplate> name; ///< else the source's stem with the extension of the format
    bool keepsExtension = false;      ///< whether a source with an extension of the format keeps it
    OptionalString setName;           ///< of the preset, for `name`

    bool operator==(const ResultPlace&) const = default;
};

/// The folder for the result of a file in `folder`. `rootPath` is the given folder in which it was found.
/// nil if there is no folder.
OptionalString folderFor(const ResultPlace& place, const OptionalString& folder,
                         const OptionalString& rootPath);

} // namespace kestrine
