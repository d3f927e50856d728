#include "kestrinectl/desktop/DesktopStatus.h"

#include "kestrinectl/desktop/ActionsOfSets.h"
#include "kestrinectl/desktop/EachTarget.h"
#include "kestrinectl/sets/PresetStore.h"
#include "kestrinectl/text/JSONText.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "platform/host/process/ProgramPath.h"

#include <algorithm>
#include <new>

namespace kestrine {

namespace {

constexpr const char* updateHint =
    "'kestrinectl desktop install' brings the actions in file managers up to date";

bool isFound(const DesktopTarget& target) { return programExists(std::string(target.program)); }

bool canBeUpdated(const ActionPlan& plan) { return plan.installed > 0 && !plan.changes.empty(); }

const char* stateOf(const ActionPlan& plan) {
    if (plan.installed == 0)
        return "no actions";
    if (canBeUpdated(plan) || !plan.edited.empty())
        return "out of date";
    return plan.isComplete() ? "up to date" : "incomplete";
}

/// "Nautilus: found, 2 actions in /home/me/.local/share/nautilus/scripts/Resize, 1 edited, out of date"
std::string statusLine(const DesktopTarget& target, const ActionPlan& plan) {
    std::string line = sentenceAbout(target, isFound(target) ? "found" : "not found");
    if (plan.installed == 0)
        return line + ", " + stateOf(plan);
    line += ", " + counted(plan.installed, "action") + " in " + placeOf(target);
    if (!plan.edited.empty())
        line += ", " + std::to_string(plan.edited.size()) + " edited";
    if (!plan.foreign.empty())
        line += ", " + std::to_string(plan.foreign.size()) + " prevented by files of others";
    return line + ", " + stateOf(plan);
}

nlohmann::ordered_json toJSON(const DesktopTarget& target, const ActionPlan& plan) {
    const std::string place = placeOf(target);
    return {{"fileManager", target.title},
            {"found", isFound(target)},
            {"place", place.empty() ? nlohmann::ordered_json() : textToJSON(place)},
            {"actions", plan.installed},
            {"edited", plan.edited.size()},
            {"prevented", plan.foreign.size()},
            {"state", stateOf(plan)}};
}

} // namespace

void showDesktopStatus(bool asJSON) {
    const DesktopActions actions = actionsOf(PresetStore::load().sets()).actions;
    bool anyCanBeUpdated = false;
    const auto show = [&](const DesktopTarget& target) {
        const Result<ActionPlan> plan = planFor(target, actions, false);
        if (!plan)
            throw CommandError(sentenceAbout(target, plan.failure().text));
        printLine(asJSON ? toJSON(target, *plan).dump() : statusLine(target, *plan));
        anyCanBeUpdated = anyCanBeUpdated || canBeUpdated(*plan);
        return true;
    };
    forEachTarget(show, "not all actions could be read");
    if (anyCanBeUpdated && !asJSON)
        printHint(updateHint);
}

void remindOfDesktopActions(const ResizeSets& sets) {
    try {
        const DesktopActions actions = actionsOf(sets).actions;
        const bool anyCanBeUpdated = std::ranges::any_of(desktopTargets(), [&](const DesktopTarget& target) {
            const Result<ActionPlan> plan = planFor(target, actions, false);
            return plan && canBeUpdated(*plan);
        });
        if (anyCanBeUpdated)
            printHint(updateHint);
    } catch (const std::bad_alloc&) {
        return; // the change itself has succeeded
    }
}

} // namespace kestrine
