// chosenSets: the sets that a command applies.
#pragma once

#include "kestrinectl/sets/PresetStore.h"

namespace kestrine {

/// The named sets or, if none is named, the selected ones. None if none is named and the options of the
/// command describe the result. Throws CommandError if there is none to apply; `example` are options that
/// describe a result.
ResizeSets chosenSets(const PresetStore& store, const std::vector<std::string>& names,
                      bool optionsDescribeResult, const std::string& example);

} // namespace kestrine
