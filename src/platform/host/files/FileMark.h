// FileMark: identifies a file and its state, to detect changes.
#pragma once

#include "platform/host/Result.h"

#include <cstdint>
#include <string>

namespace kestrine {

struct FileMark {
    std::uint64_t device = 0, inode = 0;
    std::uint64_t bytes = 0;
    std::int64_t modified = 0; ///< nanoseconds since 1970

    bool operator==(const FileMark&) const = default;

    /// Whether length and time agree. This also holds for a copy that keeps the time.
    bool looksLike(const FileMark& other) const { return bytes == other.bytes && modified == other.modified; }
};

/// The mark of the file at `path`; links are followed. Fails with notFound if there is none.
Result<FileMark> markOfFile(const std::string& path);

/// The mark of the item itself; a link is not followed.
Result<FileMark> markOfItem(const std::string& path);

} // namespace kestrine
