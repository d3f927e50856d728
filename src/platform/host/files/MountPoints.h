// Where one file system ends and another begins.
// Paths must be absolute and free of symbolic links and dots, as realpath(3) gives them.
#pragma once

#include "platform/host/files/FolderEntry.h"

#include <string>
#include <vector>

namespace kestrine {

/// The folder on which the file system of `folder` is mounted; the same disk mounted in a second place
/// counts as another one, since files cannot be renamed across.
std::string topFolderOf(const std::string& folder);

/// Whether something is mounted on the entry itself, be it a folder or a file, or the system does not tell.
bool isMountPoint(const FolderEntry& entry);

/// A place where something is mounted.
struct MountPoint {
    std::string path;
    /// Whether a file system is shown there from its own top, which makes the place a folder. A part of one
    /// that is mounted in a second place may be a file.
    bool showsWhole;
};

/// What is mounted where, oldest first, hidden places included; a place comes twice when one mount covers
/// another there. notFound where the system shows no table of mounts.
Result<std::vector<MountPoint>> mountPoints();

/// Whether something is mounted anywhere below `folder`.
bool hasMountPointBelow(const std::string& folder);

} // namespace kestrine
