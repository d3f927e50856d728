// What the Finder keeps beside a file's content: a comment and the Finder information.
// Both live in extended attributes, under the names that Linux desktops and file servers use; a sidecar
// ("._name") that is there already is read and kept up to date, but none is ever made.
#pragma once

#include "platform/finder/FinderInfo.h"
#include "platform/foundation/text/NSString.h"
#include "platform/host/Result.h"

#include <string>

namespace kestrine {

// Paths are bytes and follow symbolic links. Every function fails with notFound when nothing is there, with
// unsupported where the file system keeps no attributes and no sidecar keeps the value, and with
// notPermitted for lack of rights. Setting fails also with noSpace or tooLarge; after a failure the old value
// or the new one is read, and places that others look at may not be up to date.

/// The comment; absent when there is none. A comment that a desktop, a Mac or a file server left is found.
Result<OptionalString> finderComment(const std::string& path);

/// Sets the comment so that desktops, and a file server that kept one already, show it. An empty comment
/// removes it everywhere.
Result<void> setFinderComment(const std::string& path, const NSString& comment);

/// The Finder information; all zero when none was ever kept.
Result<FinderInfo> finderInformation(const std::string& path);

/// Sets all fields. What holds nothing but zeros is removed rather than kept.
Result<void> setFinderInformation(const std::string& path, const FinderInfo& information);

} // namespace kestrine
