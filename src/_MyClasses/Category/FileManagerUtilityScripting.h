// The Finder asked by scripts (AS...) and the workspace asked (WS...) to trash, copy, move or link files.
//
// The script functions block until the Finder has done it. They return nil (a null pointer) when all went
// well and when there was nothing to ask for, else the dictionary of the script's error. A name with a double
// quote or a backslash cannot be told by a script: it would change what the script means. Such a script is
// formed, but never run; the error is scriptSyntaxError then, and nothing is done at all.
#pragma once

#include "platform/appkit/AppleScriptError.h"

#include <vector>

namespace kestrine {

/// `convertPathType`: the Finder path of an item: the names from the volume down, with colons between them
/// and one at the end for a folder. "" when nothing is there.
NSString convertPathType(const NSString& path);

/// `pathListStringForScript`: the Finder paths in double quotes, with commas between them.
NSString pathListStringForScript(const std::vector<NSString>& paths);

/// `ASTrashFiles`: moves the items to the trash. Does nothing for no paths.
ScriptErrorInformation ASTrashFiles(const std::vector<NSString>& paths);

/// `ASTrashFile`: moves one item to the trash. Does nothing for an empty path.
ScriptErrorInformation ASTrashFile(const NSString& path);

/// `ASCopyFilesToFolder`: copies the items into a folder; with `replaces` those of the same names that are
/// there give way, else they are an error. Does nothing for no paths.
ScriptErrorInformation ASCopyFilesToFolder(const std::vector<NSString>& paths, const NSString& folder,
                                           bool replaces);

/// `ASMoveFileToFolder`: moves one item into a folder. Does nothing for an empty path or folder.
ScriptErrorInformation ASMoveFileToFolder(const NSString& path, const NSString& folder, bool replaces);

/// `ASMoveFilesToFolder`: moves the items into a folder. Does nothing for no paths.
ScriptErrorInformation ASMoveFilesToFolder(const std::vector<NSString>& paths, const NSString& folder,
                                           bool replaces);

/// `WSLinkFilesToFolder`: makes links to the items in a folder. Failures are quiet.
void WSLinkFilesToFolder(const std::vector<NSString>& paths, const NSString& folder);

/// `WSMoveFilesToFolder`: moves or, with `copies`, copies the items into a folder, with their Finder
/// comments. From the first item on that is on another volume than the folder (isSameVolumePath) all are
/// copied. Failures are quiet.
void WSMoveFilesToFolder(const std::vector<NSString>& paths, const NSString& folder, bool copies);

} // namespace kestrine
