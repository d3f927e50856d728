// Structure: the structure of a TIFF file without the pictures: its directories and their chain.
#pragma once

#include "platform/host/files/ByteReader.h"

#include <optional>

namespace kestrine::tiff {

/// A file with a valid header, classic or big, in either byte order.
class Structure {
public:
    struct Entry {
        std::uint16_t tag, type;
        std::uint64_t count;
        std::uint64_t valuesAt; ///< where they are in the file
    };
    using Directory = std::vector<Entry>;

    /// Whether a file that begins with `head` is a TIFF file.
    static bool recognises(ByteView head);

    /// Reads the header of a recognised file.
    explicit Structure(std::shared_ptr<const ByteReader> reader);

    bool isBigEndian() const { return isBigEndian_; }

    /// The directories of the pages, by their offsets and in stored order: at most 1000; a loop ends the
    /// chain.
    struct Chain {
        std::vector<std::uint64_t> pages;
        bool isBroken = false; ///< the next directory lies beyond the end of the file
    };
    Chain chain() const;

    /// The offsets of the pages of a complete chain, at least one. Fails with reason "truncated" when the
    /// chain is broken, and "malformed" when there is no page.
    Result<std::vector<std::uint64_t>> pages() const;

    /// The entries of the directory at `offset`; empty when it is incomplete.
    Directory directoryAt(std::uint64_t offset) const;

    /// The directory that the entry `tag` points to; empty when there is none.
    Directory child(const Directory& parent, std::uint16_t tag) const;

    /// The unsigned integers in the entry `tag`; empty when there is no such entry, it has more than `limit`
    /// values, or they are incomplete.
    std::vector<std::uint64_t> numbers(const Directory& directory, std::uint16_t tag,
                                       std::size_t limit) const;

    /// The bytes of the values of `entry` as stored; empty when they are incomplete, longer than `limit`
    /// bytes, or of an unknown type.
    Bytes values(const Entry& entry, std::size_t limit) const;

private:
    std::uint64_t numberIn(ByteView bytes) const;
    /// The number of `bytes` bytes at `offset`; nullopt beyond the end of the file.
    std::optional<std::uint64_t> number(std::uint64_t offset, std::size_t bytes) const;
    /// How many entries the directory at `offset` has; nullopt if there cannot be a directory.
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
