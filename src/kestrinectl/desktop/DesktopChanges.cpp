#include "kestrinectl/desktop/DesktopChanges.h"

#include "kestrinectl/desktop/ActionsOfSets.h"
#include "kestrinectl/desktop/EachTarget.h"
#include "kestrinectl/desktop/Quoting.h"
#include "kestrinectl/sets/PresetStore.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "platform/host/process/ProgramPath.h"

namespace kestrine {

namespace {

constexpr const char* incompleteChange = "not all actions could be changed";

/// Throws CommandError.
void change(const DesktopTarget& target, const Result<ActionPlan>& plan) {
    const Result<void> done = plan ? carryOut(*plan) : plan.failure();
    if (!done)
        throw CommandError(sentenceAbout(target, done.failure().text));
}

/// Returns whether there are none.
bool printObstacles(const DesktopTarget& target, const ActionPlan& plan) {
    for (const auto& sentences : {plan.edited, plan.foreign})
        for (const std::string& sentence : sentences)
            printError(sentenceAbout(target, sentence));
    return plan.isComplete();
}

/// The program's path is quoted by rules that differ between file managers and their versions; these
/// characters would not pass all of them.
void checkProgramPath(const std::string& path) {
    if (path.find('%') != std::string::npos || objectionToLabel(path))
        throw CommandError("file managers cannot start " + quoted(path)
                           + "; install the program in a folder without % and control characters");
}

/// Returns whether nothing was in the way.
bool installIn(const DesktopTarget& target, const Result<ActionPlan>& plan) {
    change(target, plan);
    for (const std::string& sentence : plan->leftOut)
        printWarning(sentenceAbout(target, sentence));
    if (plan->installedAfter > 0 || plan->installed > 0)
        printLine(sentenceAbout(target, counted(plan->installedAfter, "action") + " in " + placeOf(target)));
    return printObstacles(target, *plan);
}

} // namespace

void installActions(bool inAll, bool overwrites) {
    const ActionsOfSets wanted = actionsOf(PresetStore::load().sets());
    checkProgramPath(wanted.actions.program);
    for (const std::string& sentence : wanted.leftOut)
        printWarning(sentence);
    bool hasAny = false;
    const auto installWhereWanted = [&](const DesktopTarget& target) {
        const Result<ActionPlan> plan = planFor(target, wanted.actions, overwrites);
        const bool isUsed = plan && plan->installed > 0;
        if (!inAll && !isUsed && !programExists(std::string(target.program)))
            return true;
        hasAny = true;
        return installIn(target, plan);
    };
    forEachTarget(installWhereWanted, incompleteChange);
    if (!hasAny)
        throw CommandError("no file manager was found in PATH; --all installs the actions for all that are "
                           "supported");
    if (wanted.actions.setNames.empty())
        throw CommandError("there is no set for an action; 'kestrinectl sets add NAME' adds one");
}

void removeActions(bool overwrites) {
    bool hasAny = false;
    const auto removeFrom = [&](const DesktopTarget& target) {
        const Result<ActionPlan> plan = planFor(target, {}, overwrites);
        change(target, plan);
        hasAny = hasAny || plan->installed > 0;
        if (const std::size_t removed = plan->installed - plan->installedAfter; removed > 0)
            printLine(sentenceAbout(target, counted(removed, "action") + " removed"));
        return printObstacles(target, *plan);
    };
    forEachTarget(removeFrom, incompleteChange);
    if (!hasAny)
        printLine("no actions are installed");
}

} // namespace kestrine
