#include "platform/appkit/NSWorkspace.h"

#include "platform/finder/FilePackage.h"
#include "platform/finder/Finder.h"
#include "platform/host/FailureCollector.h"
#include "platform/host/process/Environment.h"
#include "platform/host/trash/Trash.h"

namespace kestrine {

namespace {

/// A name of only slashes would mean the whole source folder, so it gives the empty path, which every
/// operation refuses.
std::string pathOf(const NSString& source, const NSString& file) {
    const bool isName = file.utf16().find_first_not_of(u'/') != std::u16string::npos;
    return isName ? source.appendingPathComponent(file).utf8() : "";
}

bool recycleAll(const NSString& source, const std::vector<NSString>& files) {
    bool allWent = true;
    for (const NSString& file : files) {
        const Result<TrashedItem> trashed = NSWorkspace::shared().recycle(source, file);
        if (!trashed)
            noteFailure(trashed.failure());
        allWent = allWent && trashed.ok();
    }
    return allWent;
}

using Bring = FinderOutcome (*)(const std::vector<std::string>& items, const std::string& folder);

struct Operation {
    const char16_t* name;
    Bring bring;
};

constexpr Operation operations[] = {
    {NSWorkspaceMoveOperation,
     [](const auto& items, const auto& folder) { return finderMove(items, folder, Replacing::no); }},
    {NSWorkspaceCopyOperation,
     [](const auto& items, const auto& folder) { return finderDuplicate(items, folder, Replacing::no); }},
    {NSWorkspaceLinkOperation, finderLink},
};

bool bringTo(const NSString& destination, const NSString& source, const std::vector<NSString>& files,
             Bring bring) {
    std::vector<std::string> items;
    for (const NSString& file : files)
        items.push_back(pathOf(source, file));
    return !bring(items, destination.utf8());
}

bool perform(const NSString& operation, const NSString& source, const NSString& destination,
             const std::vector<NSString>& files) {
    if (operation == NSString(NSWorkspaceRecycleOperation))
        return recycleAll(source, files);
    for (const Operation& known : operations)
        if (operation == NSString(known.name))
            return bringTo(destination, source, files, known.bring);
    return false;
}

} // namespace

NSWorkspace& NSWorkspace::shared() {
    static NSWorkspace workspace;
    return workspace;
}

bool NSWorkspace::performFileOperation(const NSString& operation, const NSString& source,
                                       const NSString& destination, const std::vector<NSString>& files,
                                       int* tag) {
    const bool done = perform(operation, source, destination, files);
    if (tag != nullptr)
        *tag = done ? 0 : -1;
    return done;
}

Result<TrashedItem> NSWorkspace::recycle(const NSString& source, const NSString& file) {
    return moveToTrash(pathOf(source, file), Environment::ofProcess());
}

bool NSWorkspace::isFilePackageAtPath(const NSString& fullPath) const {
    return isFilePackage(fullPath.utf8());
}

} // namespace kestrine
