// Finder comments, labels and Finder information of files, and Apple Events to the Finder.
// Links are followed. A nil path counts as a path where nothing is.
#pragma once

#include "platform/carbon/Files.h"
#include "platform/foundation/NSFileManager.h"

namespace kestrine {

/// `getFSRefFromPath`: makes a reference to the item, an empty one when nothing is there; 0 in both cases.
/// -1, and a line in the log, when the path cannot be encoded.
OSStatus getFSRefFromPath(const OptionalString& path, FSRef* reference);

/// `finderLabelColorOfPath`: the item's label, 0 (none) to 7, which is also logged. 0 without a line in the
/// log when it cannot be read.
int finderLabelColorOfPath(const OptionalString& path);

/// `labelForPath`: finderLabelColorOfPath().
int labelForPath(const OptionalString& path);

/// `finderLabelForPath`: finderLabelColorOfPath() before 10.6. From 10.6 on it is deliberately 0 for every
/// path for which getFSRefFromPath() succeeds.
int finderLabelForPath(const OptionalString& path);

/// `getFileTypeForPath`: the four-character code; 0 when there is none or it cannot be read.
OSType getFileTypeForPath(const OptionalString& path);

/// `isAliasPath`: whether the item has the Finder's alias flag. Symbolic links are followed, and are not
/// aliases.
bool isAliasPath(const OptionalString& path);

/// `myFSRefGetFInfo`: the status of reading the Finder information. Deliberately does not set `information`.
OSErr myFSRefGetFInfo(const FSRef* reference, FileInfo* information);

/// `myFSRefSetFInfo`: sets all five fields.
OSErr myFSRefSetFInfo(const FSRef* reference, const FileInfo* information);

/// `commentForFile`: the Finder comment of the item at `path`; nil when there is none. Before 10.5 the
/// comment is requested from the Finder, logged, and cut to the characters that fit in 256 bytes of UTF-8; a
/// missing comment is then an empty string.
OptionalString commentForFile(const OptionalString& path);

/// `setCommentForFile`: requests the Finder to set the comment; an empty one removes it, nil does nothing.
/// Failures are not reported; a comment that cannot be encoded is logged.
void setCommentForFile(const OptionalString& comment, const OptionalString& path);

/// `copyComment`: copies the comment. When the source has none, nothing changes; before 10.5 the
/// destination's comment is removed.
void copyComment(const OptionalString& source, const OptionalString& destination);

/// `copyFinderInfo`: logs its name and copies type, creator, flags (with the label), location and comment. A
/// source that cannot be read counts as empty. Returns the status of updateFinderIcon().
OSStatus copyFinderInfo(const OptionalString& source, const OptionalString& destination);

/// `copyLabelIfNeeded`: copies the Finder information when the labels differ.
void copyLabelIfNeeded(const OptionalString& source, const OptionalString& destination);

/// `updateFinderIcon`: makes an event 'fndr' 'fupd' and returns the status. Deliberately does not send it,
/// and ignores `item`.
OSStatus updateFinderIcon(const FSSpec* item);

/// `AECopyFile`: requests the Finder to copy the item into a folder. -50 when a path is nil or empty; else
/// the first failure to make or send the event. An error of the Finder itself is not reported.
OSStatus AECopyFile(const OptionalString& source, const OptionalString& folder, bool replace);

namespace myUtility {

/// `copyFolderFrom:to:`: makes a folder at `destination` with the attributes, Finder information and comment
/// of `source`, but without its contents. Failures are not reported and do not stop the other steps.
void copyFolderFrom(NSFileManager& manager, const NSString& source, const NSString& destination);

} // namespace myUtility
} // namespace kestrine
