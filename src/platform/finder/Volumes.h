// The Finder's view of the file tree: volumes with names, and items that know their name and their parent.
// One level stands above the volumes, so that a walk upwards ends one step above a volume's root.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/Result.h"

#include <string>
#include <vector>

namespace kestrine {

/// A mounted file system.
struct Volume {
    std::string mountPoint; ///< an absolute path; "/" of the start-up volume
    NSString name;          ///< never empty, different from every other volume's, colons shown as slashes
};

/// The volumes of this moment, the start-up volume first, then the oldest first. Every folder on which
/// something is mounted is one, pseudo file systems included, so that each path lies on a volume. A volume is
/// called as its folder; a later one whose name is taken gets a number ("disk 1"). Where the system shows no
/// table of mounts all is the start-up volume.
Result<std::vector<Volume>> mountedVolumes();

/// The name of the level above the volumes.
NSString topLevelName();

/// What the catalog knows of an item: its name as the Finder shows it (a colon in a file's name appears as a
/// slash, since colons separate names; at most 255 UTF-16 units) and the path of what holds it.
struct CatalogEntry {
    NSString name;
    /// Free of links and dots. "" stands for the level above the volumes.
    std::string parent;
};

/// `path` is absolute, or "" for the level above the volumes, which has a name but no parent and is
/// therefore refused. The last component is not followed when it is a link. notFound when nothing is there.
Result<CatalogEntry> catalogEntry(const std::string& path);

/// Colons and slashes trade places: a file's name as the Finder shows it, and back.
NSString withColonsAndSlashesSwapped(const NSString& name);

} // namespace kestrine
