// The commands that work on whole folders.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <vector>

namespace kestrine {

struct FolderCommand {
    NSString program; ///< an absolute path
    std::vector<NSString> arguments;
};

/// Renames the item within its folder.
FolderCommand renamingCommand(const NSString& path, const NSString& newName);
FolderCommand copyingCommand(const NSString& source, const NSString& destination);
FolderCommand removingCommand(const NSString& path);
FolderCommand unarchivingCommand(const NSString& archive, const NSString& folder);

/// Runs the command and waits for its end. Ignores its exit status, and a program that cannot be started.
void runQuietly(const FolderCommand& command);

} // namespace kestrine
