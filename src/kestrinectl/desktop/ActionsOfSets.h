// ActionsOfSets: which stored sets get actions in file managers.
#pragma once

#include "kestrinectl/desktop/DesktopTargets.h"
#include "models/StoredPresets.h"

namespace kestrine {

struct ActionsOfSets {
    DesktopActions actions;           ///< they start this program
    std::vector<std::string> leftOut; ///< sentences about sets that no file manager can show or choose
};

ActionsOfSets actionsOf(const ResizeSets& sets);

} // namespace kestrine
