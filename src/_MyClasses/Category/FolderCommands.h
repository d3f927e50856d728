// The programs that work on whole folders, each with the argument vector that it is started with.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <vector>

namespace kestrine {

struct FolderCommand {
    NSString program; ///< an absolute path
    std::vector<NSString> arguments;
};

/// Gives the item another last name.
FolderCommand renamingCommand(const NSString& path, const NSString& newName);
FolderCommand copyingCommand(const NSString& source, const NSString& destination);
FolderCommand removingCommand(const NSString& path);
FolderCommand unarchivingCommand(const NSString& archive, const NSString& folder);

/// Runs the command to its end. A program that cannot be started is passed over, and so is its exit status.
void runQuietly(const FolderCommand& command);

} // namespace kestrine
