// What the commands do with every file manager: a plan for the current user, and errors that do not end the
// others.
#pragma once

#include "kestrinectl/CommandError.h"
#include "kestrinectl/desktop/DesktopTargets.h"

#include <functional>

namespace kestrine {

/// The folder or file that holds the actions of the current user; "" for a user without a home.
std::string placeOf(const DesktopTarget& target);

Result<ActionPlan> planFor(const DesktopTarget& target, const DesktopActions& actions, bool overwrites);

/// "Nautilus: SENTENCE".
std::string sentenceAbout(const DesktopTarget& target, const std::string& sentence);

/// Runs `work` for every file manager, also after a CommandError, whose message is printed. `work` returns
/// whether all of it was done. Throws CommandError with `complaint` at the end unless everything was done.
void forEachTarget(const std::function<bool(const DesktopTarget& target)>& work, const char* complaint);

} // namespace kestrine
