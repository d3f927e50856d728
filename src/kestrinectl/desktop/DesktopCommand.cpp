#include "kestrinectl/desktop/DesktopCommand.h"

#include "kestrinectl/desktop/DesktopChanges.h"
#include "kestrinectl/desktop/DesktopRun.h"
#include "kestrinectl/desktop/DesktopStatus.h"

#include <memory>

namespace kestrine {

namespace {

void addInstall(CLI::App& desktop) {
    CLI::App* command = desktop.add_subcommand(
        "install",
        "Add an action for each set to the menus of file managers, or bring the actions up to date");
    auto all = std::make_shared<bool>(false), overwrites = std::make_shared<bool>(false);
    command->add_flag("--all", *all,
                      "For all supported file managers (default: those that are found in PATH)");
    command->add_flag("--overwrite", *overwrites,
                      "Also replace edited actions (default: keep them and fail)");
    command->callback([all, overwrites] { installActions(*all, *overwrites); });
}

void addRemoveActions(CLI::App& desktop) {
    CLI::App* command =
        desktop.add_subcommand("remove", "Remove all actions from the menus of file managers");
    auto overwrites = std::make_shared<bool>(false);
    command->add_flag("--overwrite", *overwrites, "Also remove edited actions (default: keep them and fail)");
    command->callback([overwrites] { removeActions(*overwrites); });
}

void addStatus(CLI::App& desktop) {
    CLI::App* command = desktop.add_subcommand(
        "status", "Show which file managers are found, and whether they have the actions");
    auto asJSON = std::make_shared<bool>(false);
    command->add_flag("--json", *asJSON, "Print one JSON object per file manager");
    command->callback([asJSON] { showDesktopStatus(*asJSON); });
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

} // namespace kestrine
