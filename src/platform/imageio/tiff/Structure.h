// Structure: the bare structure of a TIFF file, without any picture: its directories and their chain.
#pragma once

#include "platform/host/files/ByteReader.h"

#include <optional>

namespace kestrine::tiff {

/// A file with a sound header, classic or big, in either byte order.
class Structure {
public:
    struct Entry {
        std::uint16_t tag, type;
        std::uint64_t count;
        std::uint64_t valuesAt; ///< where they are in the file
    };
    using Directory = std::vector<Entry>;

    /// Whether a file that begins with `head` is one.
    static bool recognises(ByteView head);

    /// Reads the header of a recognised file.
    explicit Structure(std::shared_ptr<const ByteReader> reader);

    bool isBigEndian() const { return isBigEndian_; }

    /// Where the pages' directories begin, in stored order: at least one, at most 1000; a loop ends the
    /// chain. truncated when a directory lies beyond the end of the file.
    Result<std::vector<std::uint64_t>> pages() const;

    /// The entries of the directory at `offset`; empty when it is not whole.
    Directory directoryAt(std::uint64_t offset) const;

    /// The directory that the entry `tag` points to; empty when there is none.
    Directory child(const Directory& parent, std::uint16_t tag) const;

    /// The values of the whole numbers in the entry `tag`, at most `limit` of them; empty when there is no
    /// such entry or they are not all there.
    std::vector<std::uint64_t> numbers(const Directory& directory, std::uint16_t tag,
                                       std::size_t limit) const;

    /// The bytes of the values of `entry`, as the file has them; empty when they are not all there, are more
    /// than `limit` bytes or of an unknown type.
    Bytes values(const Entry& entry, std::size_t limit) const;

private:
    std::uint64_t numberIn(ByteView bytes) const;
    /// The number of `bytes` bytes at `offset`; nothing beyond the end of the file.
    std::optional<std::uint64_t> number(std::uint64_t offset, std::size_t bytes) const;
    /// How many entries the directory at `offset` has, if it can be one.
    std::optional<std::size_t> entryCount(std::uint64_t offset) const;
    std::optional<std::uint64_t> next(std::uint64_t directory) const;

    // Sizes that differ between classic and big files.
    std::size_t offsetBytes() const { return isBig_ ? 8 : 4; }
    std::size_t countBytes() const { return isBig_ ? 8 : 2; }
    std::size_t entryBytes() const { return 4 + 2 * offsetBytes(); }

    std::shared_ptr<const ByteReader> reader_;
    bool isBigEndian_ = false, isBig_ = false;
};

} // namespace kestrine::tiff
