// Actions of Dolphin: a service menu of KIO per set. KIO shows only service menus of the user that are
// executable, and joins those with the same submenu.

#include "kestrinectl/desktop/DesktopTargets.h"
#include "kestrinectl/desktop/Quoting.h"

namespace kestrine::desktop {

namespace {

std::string serviceMenu(const std::string& setName, std::size_t position, const DesktopActions& actions) {
    const std::string id = numberedActionName(position);
    return "[Desktop Entry]\n"
           "Type=Service\n"
           "Name="
           + keyFileValue(setName)
           + "\n"
             "X-KDE-ServiceTypes=KonqPopupMenu/Plugin\n"
             "MimeType=image/*;\n"
             "X-KDE-Protocols=file\n"
             "X-KDE-Submenu="
           + std::string(actionMenu)
           + "\n"
             "Icon=image-x-generic\n"
             "Actions="
           + id
           + ";\n"
             "\n"
             "[Desktop Action "
           + id
           + "]\n"
             "Name="
           + keyFileValue(setName)
           + "\n"
             "Icon=image-x-generic\n"
             "Exec="
           + execArgument(actions.program) + " " + DesktopActions::runArguments(setName) + " -- %F\n";
}

} // namespace

Result<ActionPlan> planOfDolphin(const std::string& folder, const DesktopActions& actions) {
    std::vector<ActionFile> files;
    for (std::size_t i = 0; i < actions.setNames.size(); ++i)
        files.push_back({numberedActionName(i) + ".desktop", serviceMenu(actions.setNames[i], i, actions)});
    return planOfFiles(folder, files, true, actions.overwrites);
}

} // namespace kestrine::desktop
