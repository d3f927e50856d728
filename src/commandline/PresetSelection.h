// PresetSelection: what the arguments ask for. A pure function of the arguments and the stored presets.
#pragma once

#include "models/ResizeSet.h"
#include "platform/foundation/NSIndexSet.h"

namespace kestrine {

struct PresetSelection {
    bool listsSets = false;      ///< only the names of the stored sets are wanted
    ResizeSets sets;             ///< to apply; empty when nothing is selected
    std::vector<NSString> files; ///< as typed
};

/// `arguments` begins with the program's name.
///   -l anywhere          lists the sets, whatever else is said
///   -set NAME FILE...    the first set of exactly this name; what stands before -set is ignored
///   FILE...              the sets of the stored selection; a last -set is a file too
PresetSelection selectPresets(const std::vector<NSString>& arguments, const ResizeSets& stored,
                              const NSIndexSet& selection);

} // namespace kestrine
