// PresetSelection: the request in the arguments. A pure function of the arguments and the stored presets.
#pragma once

#include "models/ResizeSet.h"
#include "platform/foundation/NSIndexSet.h"

namespace kestrine {

struct PresetSelection {
    bool listsSets = false;      ///< only list the names of the stored sets
    ResizeSets sets;             ///< to apply; empty when nothing is selected
    std::vector<NSString> files; ///< as typed
};

/// `arguments` begins with the program's name.
///   -l anywhere          lists the sets; all other arguments are ignored
///   -set NAME FILE...    the first set of exactly this name; arguments before -set are ignored
///   FILE...              the sets of the stored selection; -set as the last argument is a file
PresetSelection selectPresets(const std::vector<NSString>& arguments, const ResizeSets& stored,
                              const NSIndexSet& selection);

} // namespace kestrine
