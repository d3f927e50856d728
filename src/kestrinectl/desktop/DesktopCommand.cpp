#include "kestrinectl/desktop/DesktopCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/desktop/DesktopRun.h"
#include "kestrinectl/desktop/DesktopTargets.h"
#include "kestrinectl/desktop/Quoting.h"
#include "kestrinectl/sets/PresetStore.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "platform/host/process/ProgramPath.h"

#include <algorithm>
#include <new>

namespace kestrine {

namespace {

/// The actions for stored sets, and sentences about sets that no file manager can show or choose.
struct ActionsOfSets {
    DesktopActions actions;
    std::vector<std::string> leftOut;
};

ActionsOfSets actionsOf(const ResizeSets& sets) {
    ActionsOfSets result{{.program = pathOfThisProgram()}};
    std::vector<std::string> all;
    for (const auto& set : sets)
        all.push_back(set->name().value_or(u"").utf8());
    for (std::size_t i = 0; i < all.size(); ++i) {
        std::optional<std::string> objection = objectionToLabel(all[i]);
        if (!objection && std::ranges::count(all, all[i]) > 1)
            objection = "several sets have the name; 'kestrinectl sets edit --name' gives one another name";
        if (!objection)
            result.actions.setNames.push_back(all[i]);
        else if (std::ranges::find(all, all[i]) - all.begin() == static_cast<std::ptrdiff_t>(i))
            result.leftOut.push_back(leftOutSentence(all[i], *objection));
    }
    return result;
}

Result<ActionPlan> planFor(const DesktopTarget& target, const DesktopActions& actions) {
    const std::string place = target.place(Environment::ofProcess());
    if (place.empty())
        return Failure{Reason::notFound, "there is no home folder; set HOME"};
    return target.plan(place, actions);
}

CommandError failureAt(const DesktopTarget& target, const Failure& failure) {
    return CommandError(std::string(target.title) + ": " + failure.text);
}

/// Throws CommandError.
void change(const DesktopTarget& target, const Result<ActionPlan>& plan) {
    const Result<void> done = plan ? carryOut(*plan) : plan.failure();
    if (!done)
        throw failureAt(target, done.failure());
}

/// Runs `work` for every file manager, also after a failure. `work` returns whether all of it was done.
/// Throws CommandError with `complaint` at the end unless everything was done.
template <class Work>
void forEachTarget(const Work& work, const char* complaint) {
    bool isComplete = true;
    for (const DesktopTarget& target : desktopTargets()) {
        try {
            isComplete = work(target) && isComplete;
        } catch (const CommandError& error) {
            printError(error.what());
            isComplete = false;
        }
    }
    if (!isComplete)
        throw CommandError(complaint);
}

constexpr const char* incompleteChange = "not all actions could be changed";

/// Returns whether there are none.
bool printObstacles(const DesktopTarget& target, const ActionPlan& plan) {
    for (const std::string& obstacle : plan.obstacles)
        printError(std::string(target.title) + ": " + obstacle);
    return plan.obstacles.empty();
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
        printWarning(std::string(target.title) + ": " + sentence);
    if (plan->wanted > 0 || plan->installed > 0)
        printLine(std::string(target.title) + ": " + counted(plan->wanted, "action") + " in "
                  + target.place(Environment::ofProcess()));
    return printObstacles(target, *plan);
}

void install(bool inAll, bool overwrites) {
    ActionsOfSets wanted = actionsOf(PresetStore::load().sets());
    wanted.actions.overwrites = overwrites;
    checkProgramPath(wanted.actions.program);
    for (const std::string& sentence : wanted.leftOut)
        printWarning(sentence);
    bool hasAny = false;
    const auto installWhereWanted = [&](const DesktopTarget& target) {
        const Result<ActionPlan> plan = planFor(target, wanted.actions);
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

void remove(bool overwrites) {
    bool hasAny = false;
    const auto removeFrom = [&](const DesktopTarget& target) {
        const Result<ActionPlan> plan = planFor(target, {.overwrites = overwrites});
        change(target, plan);
        hasAny = hasAny || plan->installed > 0;
        if (const std::size_t removed = plan->installed - plan->obstacles.size(); removed > 0)
            printLine(std::string(target.title) + ": " + counted(removed, "action") + " removed");
        return printObstacles(target, *plan);
    };
    forEachTarget(removeFrom, incompleteChange);
    if (!hasAny)
        printError("no actions are installed");
}

bool isOutOfDate(const ActionPlan& plan) { return plan.installed > 0 && !plan.changes.empty(); }

/// "Nautilus: found, 2 actions in /home/me/.local/share/nautilus/scripts/Resize, up to date"
std::string statusLine(const DesktopTarget& target, const ActionPlan& plan) {
    std::string line =
        std::string(target.title) + (programExists(std::string(target.program)) ? ": found" : ": not found");
    if (plan.installed == 0)
        return line + ", no actions";
    line += ", " + counted(plan.installed, "action") + " in " + target.place(Environment::ofProcess());
    if (!plan.obstacles.empty())
        line += ", " + std::to_string(plan.obstacles.size()) + " edited";
    return line + (isOutOfDate(plan) ? ", out of date" : ", up to date");
}

constexpr const char* updateHint =
    "'kestrinectl desktop install' brings the actions in file managers up to date";

bool hasOldActions(const ResizeSets& sets) {
    const DesktopActions actions = actionsOf(sets).actions;
    return std::ranges::any_of(desktopTargets(), [&](const DesktopTarget& target) {
        const Result<ActionPlan> plan = planFor(target, actions);
        return plan && isOutOfDate(*plan);
    });
}

void showStatus() {
    const ResizeSets sets = PresetStore::load().sets();
    const DesktopActions actions = actionsOf(sets).actions;
    const auto show = [&](const DesktopTarget& target) {
        const Result<ActionPlan> plan = planFor(target, actions);
        if (!plan)
            throw failureAt(target, plan.failure());
        printLine(statusLine(target, *plan));
        return true;
    };
    forEachTarget(show, "not all actions could be read");
    if (hasOldActions(sets))
        printHint(updateHint);
}

void addInstall(CLI::App& desktop) {
    CLI::App* command = desktop.add_subcommand(
        "install",
        "Add an action for each set to the menus of file managers, or bring the actions up to date");
    auto all = std::make_shared<bool>(false), overwrites = std::make_shared<bool>(false);
    command->add_flag("--all", *all,
                      "For all supported file managers (default: those that are found in PATH)");
    command->add_flag("--overwrite", *overwrites,
                      "Replace also actions that were edited (default: they stay, which is an error)");
    command->callback([all, overwrites] { install(*all, *overwrites); });
}

void addRemoveActions(CLI::App& desktop) {
    CLI::App* command =
        desktop.add_subcommand("remove", "Remove all actions from the menus of file managers");
    auto overwrites = std::make_shared<bool>(false);
    command->add_flag("--overwrite", *overwrites,
                      "Remove also actions that were edited (default: they stay, which is an error)");
    command->callback([overwrites] { remove(*overwrites); });
}

void addStatus(CLI::App& desktop) {
    desktop.add_subcommand("status", "Show which file managers are found, and whether they have the actions")
        ->callback(showStatus);
}

/// Not in the help: only the actions use it.
void addRun(CLI::App& desktop) {
    CLI::App* command = desktop.add_subcommand("run", "Convert the selected files")->group("");
    auto request = std::make_shared<DesktopRun>();
    command->add_option("--set-word", request->setWord, "The set, with =XX for special characters")
        ->required();
    command->add_flag("--uris", request->areURIs, "The files are URIs (default: paths)");
    command->add_option("FILE", request->files, "The files");
    command->callback([request] { request->run(); });
}

} // namespace

void addDesktopCommand(CLI::App& program) {
    CLI::App* desktop = program.add_subcommand(
        "desktop", "Actions for the sets in the menus of Nautilus, Dolphin, Thunar, Nemo and Caja");
    desktop->require_subcommand(1);
    for (const auto add : {addInstall, addRemoveActions, addStatus, addRun})
        add(*desktop);
}

void remindOfDesktopActions(const ResizeSets& sets) {
    try {
        if (hasOldActions(sets))
            printHint(updateHint);
    } catch (const std::bad_alloc&) {
        return; // the change itself has succeeded
    }
}

} // namespace kestrine
