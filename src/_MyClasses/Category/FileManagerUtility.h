// The extension group `myUtility` on NSFileManager, and two predicates on paths. No function reports
// failures.
#pragma once

#include "platform/foundation/NSFileManager.h"

namespace kestrine {

namespace myUtility {

/// `makeFoldersToPath:`: makes all missing folders of `path`, including the last component. When a folder
/// cannot be made, the folders below it are missing as well. The first component of a relative path is never
/// made.
void makeFoldersToPath(NSFileManager& manager, const NSString& path);

/// `fileIsDirectory:`: whether `path` is a folder but not a file package; the package "iPhoto Library" counts
/// as a folder. False for nil and when nothing is there.
bool fileIsDirectory(const NSFileManager& manager, const OptionalString& path);

/// `compareModificationDate:to:`: -1 when the first item is older, 1 when it is newer, else 0. 0 when the
/// first is missing, else 1 when the second is missing. Links are not followed.
int compareModificationDate(const NSFileManager& manager, const OptionalString& first,
                            const OptionalString& second);

/// `changeFileNameOfPath:newName:`: renames the item within its folder with "/bin/mv".
void changeFileNameOfPath(NSFileManager& manager, const NSString& path, const NSString& newName);

/// `copyFolderAndContentsFrom:to:`: copies a folder and its contents, with permissions and times, with
/// "/bin/cp".
void copyFolderAndContentsFrom(NSFileManager& manager, const NSString& source, const NSString& destination);

/// `removeFolder:`: removes the item and its contents with "/bin/rm".
void removeFolder(NSFileManager& manager, const NSString& path);

/// `unarchiveFile:toPath:`: unpacks a compressed archive into a folder with "/usr/bin/tar", which prints the
/// names to standard output. False, without starting it, when the archive or the folder does not exist; else
/// true, even when it fails.
bool unarchiveFile(NSFileManager& manager, const NSString& archive, const NSString& folder);

/// `calcSizeOfDirectory:`: the size of a file, or of everything below a folder, in bytes. Links are not
/// followed. Changes the current folder of the process to `path` if that is a folder, so no other thread may
/// use relative paths at the same time.
std::uint64_t calcSizeOfDirectory(NSFileManager& manager, const NSString& path);

} // namespace myUtility

/// `isSameVolumePath`: whether both paths have the same volume name after "/Volumes/". The first folder
/// counts as the volume name in other paths, so two paths on the start-up volume can count as different.
bool isSameVolumePath(const NSString& first, const NSString& second);

/// `isSubdirectory`: whether `candidate` is longer than `folder` and begins with it, even within a name.
/// False when one of them is empty.
bool isSubdirectory(const NSString& folder, const NSString& candidate);

} // namespace kestrine
