// The boundaries between file systems.
// Paths must be absolute and canonical, as returned by realpath(3).
#pragma once

#include "platform/host/files/FolderEntry.h"

#include <string>
#include <vector>

namespace kestrine {

/// The folder where the file system of `folder` is mounted. If one disk is mounted in two places, each place
/// counts as a file system of its own, because files cannot be renamed from one to the other. Fails if the
/// system does not report it.
Result<std::string> topFolderOf(const std::string& folder);

/// Whether a file system is mounted on the entry, which may be a folder or a file. Also true if the system
/// does not report it.
bool isMountPoint(const FolderEntry& entry);

/// A place where a file system is mounted.
struct MountPoint {
    std::string path;
    /// Whether the whole file system is mounted, which means that `path` is a folder. Otherwise a part of it
    /// is mounted, which may be a single file.
    bool showsWhole;
};

/// All mount points, oldest first. If one mount covers another, both are listed, with the same path. Fails
/// with notFound if /proc is not mounted.
Result<std::vector<MountPoint>> mountPoints();

/// Whether a file system is mounted anywhere below `folder`.
bool hasMountPointBelow(const std::string& folder);

} // namespace kestrine
