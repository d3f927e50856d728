// DesktopStatus: whether the actions in file managers fit the sets.
#pragma once

#include "models/StoredPresets.h"

namespace kestrine {

/// Prints a line for each file manager, or a JSON object. Throws CommandError at the end if the actions of
/// one cannot be read.
void showDesktopStatus(bool asJSON);

/// After the names of sets have changed: a hint if actions are installed that do not fit them.
void remindOfDesktopActions(const ResizeSets& sets);

} // namespace kestrine
