// A file's Finder comment and Finder information.
// Both are stored in extended attributes, under the names that Linux desktops and file servers use. An
// existing sidecar file ("._name") is read and updated, but never created.
#pragma once

#include "platform/finder/FinderInfo.h"
#include "platform/foundation/text/NSString.h"
#include "platform/host/Result.h"

#include <string>

namespace kestrine {

// Paths are byte strings; links are followed. Every function fails with notFound when nothing is there, with
// unsupported when the file system has no attributes and no sidecar stores the value, and with notPermitted
// when access is denied. Setting can also fail with noSpace or tooLarge; reading then gives the old value or
// the new one, and the copies for other programs may be out of date.

/// The comment, also one that a desktop, a Mac or a file server stored; nil when there is none.
Result<OptionalString> finderComment(const std::string& path);

/// Sets the comment, and updates every copy that other programs have stored. An empty comment removes it
/// everywhere.
Result<void> setFinderComment(const std::string& path, const NSString& comment);

/// The Finder information; all fields are 0 when none is stored.
Result<FinderInfo> finderInformation(const std::string& path);

/// Sets all fields. Information that is all 0 is removed.
Result<void> setFinderInformation(const std::string& path, const FinderInfo& information);

} // namespace kestrine
