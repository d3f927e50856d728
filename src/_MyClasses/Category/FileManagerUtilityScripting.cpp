#include "_MyClasses/Category/FileManagerUtilityScripting.h"

#include "_MyClasses/Category/FileManagerUtility.h"
#include "_MyClasses/Category/FileManagerUtilityMetadata.h"
#include "_MyClasses/Category/FinderScripts.h"
#include "platform/appkit/NSAppleScript.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/carbon/Files.h"

#include <algorithm>
#include <iterator>

namespace kestrine {

namespace {

/// The names from the top level to the item; empty when nothing is there.
std::vector<NSString> catalogNames(const NSString& path) {
    const std::string bytes = path.utf8();
    FSRef reference;
    if (FSPathMakeRef(reinterpret_cast<const std::uint8_t*>(bytes.c_str()), &reference, nullptr) != noErr)
        return {};
    std::vector<NSString> names;
    HFSUniStr255 name;
    FSRef parent;
    while (FSGetCatalogInfo(&reference, kFSCatInfoNone, nullptr, &name, nullptr, &parent) == noErr) {
        names.emplace_back(std::u16string(name.unicode, name.length));
        reference = parent;
    }
    std::ranges::reverse(names);
    return names;
}

NSString joinedWithColons(const std::vector<NSString>& names) {
    std::u16string text;
    for (std::size_t i = 0; i < names.size(); ++i)
        text += (i == 0 ? u"" : u":") + names[i].utf16();
    return text;
}

std::vector<NSString> finderPathsOf(const std::vector<NSString>& paths) {
    std::vector<NSString> finderPaths;
    std::ranges::transform(paths, std::back_inserter(finderPaths), convertPathType);
    return finderPaths;
}

ScriptErrorInformation run(const FinderScript& script) {
    if (const std::optional<NSRange> range = rangeOfMisleadingPath(script))
        return errorInformation(
            {scriptSyntaxError,
             u"A name contains a double quote or a backslash, which a script cannot contain.", *range});
    ScriptErrorInformation errorInfo;
    (void)NSAppleScript::initWithSource(script.source).executeAndReturnError(errorInfo);
    return errorInfo;
}

/// Ignores failures.
void perform(const NSString& operation, const NSString& path, const NSString& folder) {
    int tag = 0;
    (void)NSWorkspace::shared().performFileOperation(operation, path.deletingLastPathComponent(), folder,
                                                     {path.lastPathComponent()}, &tag);
}

} // namespace

NSString convertPathType(const NSString& path) {
    bool isDirectory = false;
    if (!NSFileManager::defaultManager().fileExistsAtPath(path, isDirectory))
        return {};
    std::vector<NSString> names = catalogNames(path);
    if (names.size() > 1)
        names.erase(names.begin()); // the top level
    if (isDirectory)
        names.emplace_back();
    return joinedWithColons(names);
}

NSString pathListStringForScript(const std::vector<NSString>& paths) {
    return quotedList(finderPathsOf(paths));
}

ScriptErrorInformation ASTrashFiles(const std::vector<NSString>& paths) {
    if (paths.empty())
        return nullptr;
    return run(deletingScript(finderPathsOf(paths)));
}

ScriptErrorInformation ASTrashFile(const NSString& path) {
    if (path.isEmpty())
        return nullptr;
    return run(fileDeletingScript(convertPathType(path)));
}

ScriptErrorInformation ASCopyFilesToFolder(const std::vector<NSString>& paths, const NSString& folder,
                                           bool replaces) {
    if (paths.empty())
        return nullptr;
    return run(duplicatingScript(finderPathsOf(paths), convertPathType(folder), replaces));
}

ScriptErrorInformation ASMoveFileToFolder(const NSString& path, const NSString& folder, bool replaces) {
    if (path.isEmpty() || folder.isEmpty())
        return nullptr;
    return run(fileMovingScript(convertPathType(path), convertPathType(folder), replaces));
}

ScriptErrorInformation ASMoveFilesToFolder(const std::vector<NSString>& paths, const NSString& folder,
                                           bool replaces) {
    if (paths.empty())
        return nullptr;
    return run(movingScript(finderPathsOf(paths), convertPathType(folder), replaces));
}

void WSLinkFilesToFolder(const std::vector<NSString>& paths, const NSString& folder) {
    for (const NSString& path : paths)
        perform(NSWorkspaceLinkOperation, path, folder);
}

void WSMoveFilesToFolder(const std::vector<NSString>& paths, const NSString& folder, bool copies) {
    NSString operation = copies ? NSWorkspaceCopyOperation : NSWorkspaceMoveOperation;
    for (const NSString& path : paths) {
        // All later items are copied as well, even those on the folder's volume.
        if (operation == NSWorkspaceMoveOperation && !isSameVolumePath(path, folder))
            operation = NSWorkspaceCopyOperation;
        const OptionalString comment = commentForFile(path);
        perform(operation, path, folder);
        setCommentForFile(comment, folder.appendingPathComponent(path.lastPathComponent()));
    }
}

} // namespace kestrine
