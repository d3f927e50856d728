// AppleDoubleBuilder: containers in the layout of file servers and Macs.
#pragma once

#include "platform/host/Bytes.h"

#include <string_view>
#include <vector>

namespace kestrine::testing {

struct BuiltEntry {
    std::uint32_t id;
    Bytes content;
    std::size_t room = 0; ///< at least as long as the content
};

/// The contents follow the header in the order given.
Bytes appleDouble(const std::vector<BuiltEntry>& entries);

/// The 402 bytes that a file server keeps in an attribute: Finder information at 122, a comment with room
/// for 200 bytes at 154, dates at 354, and five entries of the server's own.
Bytes serverBlob(std::string_view comment, ByteView finderInfo);

/// A Mac's sidecar: Finder information at 50 and a resource fork at 82.
Bytes macSidecar(ByteView finderInfo, std::string_view resourceFork);

/// A sidecar that keeps a comment as well.
Bytes sidecarWithComment(std::string_view comment, ByteView finderInfo);

} // namespace kestrine::testing
