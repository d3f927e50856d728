// FileContents: what a file holds, of which its main picture may be only a part.
#pragma once

#include "platform/host/Bytes.h"

#include <optional>

namespace kestrine {

struct FileContents {
    enum class Kind : std::uint8_t {
        picture,   ///< nothing else, or smaller copies
        animation, ///< `count` frames; the first is the main picture
        pages,     ///< `count` pages
        layers,    ///< `count` layers, which the main picture shows together
        raw,       ///< what a camera's sensor recorded
        drawing,   ///< shapes without a fixed number of pixels
    };

    Kind kind = Kind::picture;
    std::uint32_t count = 1;

    /// The contents for a number of frames or pages; a single one is a picture.
    static FileContents several(Kind kind, std::uint32_t count) {
        return count > 1 ? FileContents{kind, count} : FileContents{};
    }

    bool operator==(const FileContents&) const = default;
};

/// The five bytes in which contents pass between processes.
Bytes bytesOf(const FileContents& contents);
/// nullopt if `bytes` are not such bytes.
std::optional<FileContents> contentsIn(ByteView bytes);

} // namespace kestrine
