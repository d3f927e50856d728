// AppleDouble: the container, version 2, in which file servers and foreign volumes keep what belongs to a
// file but is not its content. A header lists entries, each with a number that tells its kind.
// Entries are found by that number and never by where some program usually puts them.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

#include <optional>

namespace kestrine {

enum class AppleDoubleEntry : std::uint32_t { comment = 4, finderInfo = 9 };

/// A view of a container in memory; the bytes must outlive it.
class AppleDouble {
public:
    /// Fails with truncated or malformed when the header or any entry breaks the rules: entries lie behind
    /// the header, inside the container, and share no byte.
    static Result<AppleDouble> parse(ByteView bytes);

    /// What the entry holds; nothing when there is no such entry.
    std::optional<ByteView> content(AppleDoubleEntry entry) const;

    /// How many bytes the entry can hold where it is: all up to the next one. 0 when there is no such entry.
    std::size_t room(AppleDoubleEntry entry) const;

    /// A copy of the container in which the entry, which exists, holds `content`, which fits its room.
    /// Nothing else changes; bytes that a longer old content leaves over are cleared.
    Bytes withContent(AppleDoubleEntry entry, ByteView content) const;

private:
    /// A line of the header.
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
