#include "platform/appkit/NSWorkspace.h"

#include "platform/host/Environment.h"
#include "platform/host/FailureCollector.h"
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
    for (const NSString& file : files) {
        const auto trashed = moveToTrash(source.appendingPathComponent(file).utf8(), environment);
        if (!trashed)
            noteFailure(trashed.failure());
        allWent = allWent && trashed.ok();
    }
    return allWent;
}

} // namespace kestrine
