// Actions of Nautilus and Caja: scripts in a folder, whose names are the entries of a menu.
//
// Both file managers pass the selection as arguments and in variables. Arguments lose the character "%", and
// a list of paths cannot hold a newline, so the scripts use the list of URIs.

#include "kestrinectl/desktop/DesktopTargets.h"
#include "kestrinectl/desktop/Quoting.h"
#include "kestrinectl/text/Replacement.h"

#include <algorithm>

namespace kestrine::desktop {

namespace {

/// NAME_MAX of Linux.
constexpr std::size_t maxScriptName = 255;

/// Similar characters for "/", which no file name can have, and "%", with which Nautilus cannot start a
/// script.
constexpr Replacement inScriptNames[] = {{'/', "\u2215"}, {'%', "\uff05"}};

/// Why a script of this name would not be shown, or cannot exist.
std::optional<std::string> objectionToScriptName(const std::string& name) {
    if (name.starts_with('.') || name.ends_with('~'))
        return "files with such names are hidden";
    if (name.size() > maxScriptName)
        return "the name is too long";
    return std::nullopt;
}

Result<ActionPlan> planOfScripts(const std::string& folder, const DesktopActions& actions, bool overwrites,
                                 const std::string& variable) {
    std::vector<ActionFile> files;
    std::vector<std::string> leftOut;
    for (const std::string& setName : actions.setNames) {
        const std::string name = replaced(setName, inScriptNames);
        const bool isTwin = std::ranges::find(files, name, &ActionFile::name) != files.end();
        const auto objection = isTwin ? "another set has a similar name" : objectionToScriptName(name);
        if (objection)
            leftOut.push_back(leftOutSentence(setName, *objection));
        else
            files.push_back({name, "#!/bin/sh\nexec " + shellWord(actions.program) + " "
                                       + runArguments(setName) + " --uris -- \"$" + variable + "\"\n"});
    }
    ActionPlan plan = TRY(planOfFiles(folder, files, true, overwrites));
    plan.leftOut = std::move(leftOut);
    if (files.empty())
        plan.emptyFolder = folder;
    return plan;
}

} // namespace

Result<ActionPlan> planOfNautilus(const std::string& folder, const DesktopActions& actions, bool overwrites) {
    return planOfScripts(folder, actions, overwrites, "NAUTILUS_SCRIPT_SELECTED_URIS");
}

Result<ActionPlan> planOfCaja(const std::string& folder, const DesktopActions& actions, bool overwrites) {
    return planOfScripts(folder, actions, overwrites, "CAJA_SCRIPT_SELECTED_URIS");
}

} // namespace kestrine::desktop
