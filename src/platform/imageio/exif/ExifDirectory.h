// ExifDirectory: the entries of one directory of an EXIF block, in either byte order.
// Entries are views into the block and always lie inside it; nothing is copied.
#pragma once

#include "platform/host/Bytes.h"

#include <map>
#include <optional>

namespace kestrine {

/// Field types of TIFF that are used by name.
enum ExifType : std::uint16_t {
    exifText = 2,
    exifShort = 3,
    exifLong = 4,
    exifRational = 5,
    exifUndefined = 7,
    exifPointer = 13, ///< a long that is the offset of a directory
    exifUTF8 = 129,
};

/// Size in bytes of one value, and of the units in it that have the byte order of the block.
struct ExifTypeSize {
    std::uint8_t value;
    std::uint8_t unit;
};

/// The sizes for types 1 to 13, and for UTF-8 (129); nullopt for other types.
std::optional<ExifTypeSize> exifTypeSize(std::uint16_t type);

struct ExifEntry {
    std::uint16_t type;
    std::uint32_t count;
    ByteView value; ///< `count` values, in the byte order of the block
};

/// The entries by tag. If a tag occurs twice, the last entry counts, as in ExifTagReader.
struct ExifDirectory : std::map<std::uint16_t, ExifEntry> {
    bool isComplete = true; ///< false if entries cannot be read or share a tag
};

/// The directories of a block with a valid header. The block must outlive this.
class ExifDirectories {
public:
    /// nullopt unless `block` begins with "MM" or "II" and the number 42 in that byte order.
    static std::optional<ExifDirectories> of(ByteView block);

    bool isBigEndian() const { return isBigEndian_; }

    /// The main directory; empty if it lies outside the block.
    ExifDirectory main() const { return directoryAt(mainOffset_); }

    /// The directory that the entry `tag` of `parent` points to; empty if there is no such pointer.
    ExifDirectory child(const ExifDirectory& parent, std::uint16_t tag) const;

    /// Whether another directory follows the main one: that of a thumbnail.
    bool hasThumbnail() const;

    /// The first value of `tag` as a number: a short, a long, or a rational with a denominator other than 0.
    std::optional<double> number(const ExifDirectory& directory, std::uint16_t tag) const;

private:
    ExifDirectories(ByteView block, bool isBigEndian) : block_(block), isBigEndian_(isBigEndian) {}

    ExifDirectory directoryAt(std::uint64_t offset) const;
    std::optional<ExifEntry> entryAt(std::size_t position) const;
    /// `bytes`, at most four, as an unsigned number in the byte order of the block.
    std::uint32_t unsignedOf(ByteView bytes) const;

    ByteView block_;
    bool isBigEndian_;
    std::uint32_t mainOffset_ = 0;
};

} // namespace kestrine
