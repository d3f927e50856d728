// AppleDouble, version 2: a container in which file servers and foreign volumes store a file's metadata.
// A header lists the entries; a number defines what an entry contains. Entries are found by this number, not
// by their usual position.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

#include <optional>

namespace kestrine {

enum class AppleDoubleEntry : std::uint32_t { comment = 4, finderInfo = 9 };

/// A view of a container in memory; the bytes must outlive it.
class AppleDouble {
public:
    /// Fails with truncated or malformed when the header or an entry is invalid. Entries must lie after the
    /// header and inside the container, and must not overlap.
    static Result<AppleDouble> parse(ByteView bytes);

    /// The content of the entry; nullopt when there is no such entry.
    std::optional<ByteView> content(AppleDoubleEntry entry) const;

    /// The maximum size of the entry at its position, in bytes: up to the next entry or the end. 0 when there
    /// is no such entry.
    std::size_t room(AppleDoubleEntry entry) const;

    /// A copy of the container with new content for the entry. The entry must exist, and `content` must not
    /// be larger than room(). Nothing else changes; left-over bytes of a longer old content become 0.
    Bytes withContent(AppleDoubleEntry entry, ByteView content) const;

private:
    /// An entry's line in the header.
    struct Line {
        std::size_t place; // of the line itself
        std::uint32_t id;
        std::size_t offset, length; // of the content
    };

    AppleDouble(ByteView bytes, std::vector<Line> lines) : bytes_(bytes), lines_(std::move(lines)) {}
    const Line* find(AppleDoubleEntry entry) const;

    ByteView bytes_;
    std::vector<Line> lines_; // in the order of their contents
};

} // namespace kestrine
