// The Finder's view of the file tree: volumes with names, and items with a name and a parent. The parent of
// every volume is the top level.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/Result.h"

#include <string>
#include <vector>

namespace kestrine {

/// A mounted file system.
struct Volume {
    std::string mountPoint; ///< an absolute path; "/" for the start-up volume
    NSString name;          ///< not empty, unique; colons appear as slashes
};

/// The volumes mounted now: the start-up volume first, then the others in the order of mounting. Every folder
/// on which something is mounted is a volume, pseudo file systems included. A volume has its folder's name;
/// if that is taken, a number is added ("disk 1"). Without a table of mounts there is only the start-up
/// volume.
Result<std::vector<Volume>> mountedVolumes();

/// The name of the top level.
NSString topLevelName();

/// An item's name as the Finder shows it (a colon in a file's name appears as a slash, because colons
/// separate names; at most 255 UTF-16 units) and its parent.
struct CatalogEntry {
    NSString name;
    /// A path without links, "." and ".."; "" is the top level.
    std::string parent;
};

/// `path` is absolute; a link at its end is not followed. notFound when nothing is there; refused for "", the
/// top level, because that has no parent.
Result<CatalogEntry> catalogEntry(const std::string& path);

/// Converts a file's name to the form that the Finder shows, and back.
NSString withColonsAndSlashesSwapped(const NSString& name);

} // namespace kestrine
