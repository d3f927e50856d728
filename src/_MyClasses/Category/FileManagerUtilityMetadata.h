// Finder comments, labels and Finder information of files, and the Finder asked by Apple Events.
// Paths follow links. A nil path is one where nothing is.
#pragma once

#include "platform/carbon/Files.h"
#include "platform/foundation/NSFileManager.h"

namespace kestrine {

/// `getFSRefFromPath`: makes a reference of the item, an empty one when nothing is there; 0 in both cases.
/// -1, and a line in the log, when the path cannot be encoded.
OSStatus getFSRefFromPath(const OptionalString& path, FSRef* reference);

/// `finderLabelColorOfPath`: the number of the item's label, 1 to 7, and a line in the log with it; 0 when it
/// has none, and without that line when it cannot be read.
int finderLabelColorOfPath(const OptionalString& path);

/// `labelForPath`: the same.
int labelForPath(const OptionalString& path);

/// `finderLabelForPath`: the same before 10.6. From then on 0 for every path that a reference can be made of,
/// on purpose.
int finderLabelForPath(const OptionalString& path);

/// `getFileTypeForPath`: the four-character code; 0 when there is none or it cannot be read.
OSType getFileTypeForPath(const OptionalString& path);

/// `isAliasPath`: whether the Finder's flags say that it is an alias. A symbolic link is followed.
bool isAliasPath(const OptionalString& path);

/// `myFSRefGetFInfo`: whether the Finder information can be read: the status alone. `information` stays as it
/// is, on purpose.
OSErr myFSRefGetFInfo(const FSRef* reference, FileInfo* information);

/// `myFSRefSetFInfo`: gives the item all five fields.
OSErr myFSRefSetFInfo(const FSRef* reference, const FileInfo* information);

/// `commentForFile`: the Finder comment of the item at `path`; nil, or before 10.5 an empty text, when there
/// is none. Before 10.5 the Finder is asked, the comment is logged, and of a long one only the characters
/// that fit in 256 bytes of UTF-8 come.
OptionalString commentForFile(const OptionalString& path);

/// `setCommentForFile`: has the Finder set the comment; an empty one is removed. A nil comment does nothing;
/// every failure is quiet, but for a line in the log when the comment cannot be encoded.
void setCommentForFile(const OptionalString& comment, const OptionalString& path);

/// `copyComment`: no comment at the source changes nothing, or before 10.5 removes that of the destination.
void copyComment(const OptionalString& source, const OptionalString& destination);

/// `copyFinderInfo`: logs its name and gives the destination the type, creator, flags with the label,
/// location and comment of the source; a source that cannot be read counts as one without any. The status of
/// updateFinderIcon().
OSStatus copyFinderInfo(const OptionalString& source, const OptionalString& destination);

/// `copyLabelIfNeeded`: copies the Finder information when the labels differ.
void copyLabelIfNeeded(const OptionalString& source, const OptionalString& destination);

/// `updateFinderIcon`: makes an event 'fndr' 'fupd' and lets it go; nothing is sent, and the item is not
/// looked at, on purpose. The status of making it.
OSStatus updateFinderIcon(const FSSpec* item);

/// `AECopyFile`: has the Finder duplicate the item into a folder. -50 when a path is empty; else the first
/// failure to name the two, or to send, which a refusal by the Finder is not.
OSStatus AECopyFile(const OptionalString& source, const OptionalString& folder, bool replace);

namespace myUtility {

/// `copyFolderFrom:to:`: makes a folder like `source` at `destination`: with its attributes, Finder
/// information and comment, but without its contents. Every failure is quiet, and the rest is done all the
/// same.
void copyFolderFrom(NSFileManager& manager, const NSString& source, const NSString& destination);

} // namespace myUtility
} // namespace kestrine
