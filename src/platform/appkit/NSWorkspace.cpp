#include "platform/appkit/NSWorkspace.h"

#include "platform/host/Environment.h"
#include "platform/host/Trash.h"

namespace kestrine {

NSWorkspace& NSWorkspace::shared() {
    static NSWorkspace workspace;
    return workspace;
}

bool NSWorkspace::performFileOperation(const NSString& operation, const NSString& source, const NSString&,
                                       const std::vector<NSString>& files) {
    if (operation != NSString(NSWorkspaceRecycleOperation))
        return false;
    const Environment environment = Environment::ofProcess();
    bool allWent = true;
    for (const NSString& file : files)
        allWent = moveToTrash(source.appendingPathComponent(file).utf8(), environment).ok() && allWent;
    return allWent;
}

} // namespace kestrine
