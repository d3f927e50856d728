// ExifDirectory: the entries of one directory of an EXIF block, in either byte order.
// Entries are views into the block, each checked to lie inside it; nothing is copied.
#pragma once

#include "platform/host/Bytes.h"

#include <map>
#include <optional>

namespace kestrine {

/// Field types of TIFF that have a meaning of their own here.
enum ExifType : std::uint16_t {
    exifText = 2,
    exifShort = 3,
    exifLong = 4,
    exifRational = 5,
    exifPointer = 13, ///< a long that is the offset of a directory
};

/// Size in bytes of one value, and the size of the units whose bytes are in the block's order.
struct ExifTypeSize {
    std::uint8_t value;
    std::uint8_t unit;
};

/// The sizes of types 1 to 13; nothing for any other.
std::optional<ExifTypeSize> exifTypeSize(std::uint16_t type);

struct ExifEntry {
    std::uint16_t type;
    std::uint32_t count;
    ByteView value; ///< count values as the block has them
};

/// By tag. Of two entries with one tag the later counts, as it does for ExifTagReader.
using ExifDirectory = std::map<std::uint16_t, ExifEntry>;

/// A block with a sound header. The bytes must outlive it.
class ExifDirectories {
public:
    /// Nothing unless `block` begins with "MM" or "II" and the number 42 in that order.
    static std::optional<ExifDirectories> of(ByteView block);

    bool isBigEndian() const { return isBigEndian_; }

    /// The main directory; empty when it lies outside.
    ExifDirectory main() const { return directoryAt(mainOffset_); }

    /// The directory that the entry `tag` of `parent` points to; empty when there is no such pointer.
    ExifDirectory child(const ExifDirectory& parent, std::uint16_t tag) const;

    /// The first value of `tag` as a number: a short, a long, or a rational with a denominator other than 0.
    std::optional<double> number(const ExifDirectory& directory, std::uint16_t tag) const;

private:
    ExifDirectories(ByteView block, bool isBigEndian) : block_(block), isBigEndian_(isBigEndian) {}

    ExifDirectory directoryAt(std::uint64_t offset) const;
    std::optional<ExifEntry> entryAt(std::size_t position) const;
    /// `bytes`, at most four of them, as an unsigned number in the block's order.
    std::uint32_t unsignedOf(ByteView bytes) const;

    ByteView block_;
    bool isBigEndian_;
    std::uint32_t mainOffset_ = 0;
};

} // namespace kestrine
