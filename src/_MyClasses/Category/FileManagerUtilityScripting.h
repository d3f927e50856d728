// Trashing, copying, moving and linking files by scripts for the Finder (AS...) or by the workspace (WS...).
//
// The script functions block until the Finder has finished. They return nil (a null pointer) on success and
// when there is nothing to do, else the dictionary of the script's error. A script with a double quote or a
// backslash in a name is never run, because the character could change its meaning; the error is then
// scriptSyntaxError.
#pragma once

#include "platform/appkit/AppleScriptError.h"

#include <vector>

namespace kestrine {

/// `convertPathType`: the Finder path of an item: the names from the volume on, separated by colons, with a
/// colon at a folder's end. "" when nothing is there.
NSString convertPathType(const NSString& path);

/// `pathListStringForScript`: the Finder paths in double quotes, separated by commas.
NSString pathListStringForScript(const std::vector<NSString>& paths);

/// `ASTrashFiles`: moves the items to the trash. Does nothing for no paths.
ScriptErrorInformation ASTrashFiles(const std::vector<NSString>& paths);

/// `ASTrashFile`: moves one item to the trash. Does nothing for an empty path.
ScriptErrorInformation ASTrashFile(const NSString& path);

/// `ASCopyFilesToFolder`: copies the items into a folder. Existing items of the same names are replaced with
/// `replaces`, else they are an error. Does nothing for no paths.
ScriptErrorInformation ASCopyFilesToFolder(const std::vector<NSString>& paths, const NSString& folder,
                                           bool replaces);

/// `ASMoveFileToFolder`: moves one item into a folder. Does nothing for an empty path or folder.
ScriptErrorInformation ASMoveFileToFolder(const NSString& path, const NSString& folder, bool replaces);

/// `ASMoveFilesToFolder`: moves the items into a folder. Does nothing for no paths.
ScriptErrorInformation ASMoveFilesToFolder(const std::vector<NSString>& paths, const NSString& folder,
                                           bool replaces);

/// `WSLinkFilesToFolder`: makes links to the items in a folder. Failures are not reported.
void WSLinkFilesToFolder(const std::vector<NSString>& paths, const NSString& folder);

/// `WSMoveFilesToFolder`: moves the items into a folder, or copies them with `copies`, and sets their Finder
/// comments there. The first item on another volume than the folder (isSameVolumePath) and all items after it
/// are copied. Failures are not reported.
void WSMoveFilesToFolder(const std::vector<NSString>& paths, const NSString& folder, bool copies);

} // namespace kestrine
