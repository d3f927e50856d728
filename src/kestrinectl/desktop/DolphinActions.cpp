// Actions of Dolphin: a service menu of KIO per set. KIO shows only service menus of the user that are
// executable, and joins those with the same submenu.

#include "kestrinectl/desktop/DesktopTargets.h"
#include "kestrinectl/desktop/NumberedFiles.h"
#include "kestrinectl/desktop/Quoting.h"

namespace kestrine::desktop {

namespace {

std::string serviceMenu(const std::string& setName, const std::string& program, const std::string& id) {
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
           + execArgument(program) + " " + runArguments(setName) + " -- %F\n";
}

} // namespace

Result<ActionPlan> planOfDolphin(const std::string& folder, const DesktopActions& actions, bool overwrites) {
    return planOfFiles(folder, numberedFiles(actions, ".desktop", serviceMenu), true, overwrites);
}

} // namespace kestrine::desktop
