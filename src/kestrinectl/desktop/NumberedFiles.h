// NumberedFiles: the files of file managers whose menus do not show the names of files.
#pragma once

#include "kestrinectl/desktop/ActionPlan.h"
#include "kestrinectl/desktop/DesktopTargets.h"

namespace kestrine::desktop {

/// What is in the file of a set. `id` is the name of the file without its ending.
using ContentOfAction = std::string(const std::string& setName, const std::string& program,
                                    const std::string& id);

/// "kestrine-01" and so on, with `ending`: one file per set, in order.
std::vector<ActionFile> numberedFiles(const DesktopActions& actions, const std::string& ending,
                                      ContentOfAction* content);

} // namespace kestrine::desktop
