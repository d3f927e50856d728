#include "_MyClasses/Category/FolderCommands.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSTask.h"

namespace kestrine {

FolderCommand renamingCommand(const NSString& path, const NSString& newName) {
    return {u"/bin/mv", {path, path.deletingLastPathComponent().appendingPathComponent(newName)}};
}

FolderCommand copyingCommand(const NSString& source, const NSString& destination) {
    return {u"/bin/cp", {u"-Rp", source, destination}};
}

FolderCommand removingCommand(const NSString& path) { return {u"/bin/rm", {u"-R", path}}; }

FolderCommand unarchivingCommand(const NSString& archive, const NSString& folder) {
    return {u"/usr/bin/tar", {u"zxvf", archive, u"-C", folder}};
}

void runQuietly(const FolderCommand& command) {
    NSTask task;
    task.setLaunchPath(command.program);
    task.setArguments(command.arguments);
    try {
        task.launch();
    } catch (const NSException&) {
        return; // the program is not installed
    }
    task.waitUntilExit();
}

} // namespace kestrine
