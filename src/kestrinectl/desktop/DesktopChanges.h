// DesktopChanges: adds the actions to file managers, and removes them.
#pragma once

namespace kestrine {

/// Adds an action for each stored set to the file managers that are found or have actions, or to all, and
/// brings those there up to date. Throws CommandError, at the end if not everything could be done.
void installActions(bool inAll, bool overwrites);

/// Removes all actions. Throws CommandError at the end if some stay.
void removeActions(bool overwrites);

} // namespace kestrine
