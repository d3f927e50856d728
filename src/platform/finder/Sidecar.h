// The sidecar file: "._name" beside "name", an AppleDouble container in which Macs store metadata on file
// systems without extended attributes. Existing sidecars are read and updated; none is ever created.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

#include <string>

namespace kestrine {

// `path` is the path of the file or folder itself; links are followed, so the sidecar is beside the link's
// target. A sidecar that is itself a link is refused (notRegularFile): it could lead to another user's file.

/// The sidecar's content. notFound when there is none, tooLarge above 17 MiB.
Result<Bytes> readSidecar(const std::string& path);

/// Replaces the content of an existing sidecar in one step. Its attributes, permissions and, if possible,
/// owner stay. notPermitted when it is write-protected.
Result<void> replaceSidecar(const std::string& path, ByteView content);

} // namespace kestrine
