// The sidecar: "._name" beside "name", an AppleDouble container in which Macs keep what a file system that
// knows no attributes cannot. We never make one; one that is there is read and kept up to date.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

#include <string>

namespace kestrine {

// Paths are those of the file or folder itself and follow symbolic links, so the sidecar lies beside what a
// link leads to. The sidecar's own name is not followed: a link in its place (notRegularFile) could lead the
// writer to somebody else's file.

/// The sidecar's content. notFound when there is none, tooLarge beyond what a resource fork can need.
Result<Bytes> readSidecar(const std::string& path);

/// Gives an existing sidecar a new content in one step; its attributes, rights and, where possible, its
/// owner stay. notPermitted when it is write-protected.
Result<void> replaceSidecar(const std::string& path, ByteView content);

} // namespace kestrine
