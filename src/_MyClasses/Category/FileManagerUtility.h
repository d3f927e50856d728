// The extension group `myUtility` on NSFileManager: what the program wants of folders and files beyond the
// platform; and two predicates on paths. All failures are quiet.
#pragma once

#include "platform/foundation/NSFileManager.h"

namespace kestrine {

namespace myUtility {

/// `makeFoldersToPath:`: makes every missing folder along `path`, the last component included. Failures are
/// quiet: a file in the way, or a folder that may not be written, leaves the levels below it unmade. The
/// first component of a relative path is never made.
void makeFoldersToPath(NSFileManager& manager, const NSString& path);

/// `fileIsDirectory:`: whether the user can open it as a folder: a folder that is no file package, or the
/// package named "iPhoto Library". Not when nothing is there, nor for nil.
bool fileIsDirectory(const NSFileManager& manager, const OptionalString& path);

/// `compareModificationDate:to:`: -1 when the first item is older, 1 when it is newer, else 0; links are
/// items themselves. 0 when the first is missing, and otherwise 1 when the second is.
int compareModificationDate(const NSFileManager& manager, const OptionalString& first,
                            const OptionalString& second);

/// `changeFileNameOfPath:newName:`: has "/bin/mv" give the item another name in its folder.
void changeFileNameOfPath(NSFileManager& manager, const NSString& path, const NSString& newName);

/// `copyFolderAndContentsFrom:to:`: has "/bin/cp" copy everything, with rights and times.
void copyFolderAndContentsFrom(NSFileManager& manager, const NSString& source, const NSString& destination);

/// `removeFolder:`: has "/bin/rm" remove the item and everything in it.
void removeFolder(NSFileManager& manager, const NSString& path);

/// `unarchiveFile:toPath:`: has "/usr/bin/tar" unpack a compressed archive into a folder; it tells the names
/// on standard output. False, and nothing is started, when one of the two does not exist; otherwise true
/// whatever came of it.
bool unarchiveFile(NSFileManager& manager, const NSString& archive, const NSString& folder);

/// `calcSizeOfDirectory:`: the size of a file, or of everything below a folder, in bytes; links are items
/// themselves. A folder becomes the process's current one and stays it, so no other thread may use relative
/// paths meanwhile.
std::uint64_t calcSizeOfDirectory(NSFileManager& manager, const NSString& path);

} // namespace myUtility

/// `isSameVolumePath`: whether both paths name the same volume below "/Volumes/", or have the same first
/// folder where they name none; so two paths on the start-up volume need not count as on the same.
bool isSameVolumePath(const NSString& first, const NSString& second);

/// `isSubdirectory`: whether `candidate` is longer than `folder` and begins with it, in the middle of a name
/// too; not when one of them is empty.
bool isSubdirectory(const NSString& folder, const NSString& candidate);

} // namespace kestrine
