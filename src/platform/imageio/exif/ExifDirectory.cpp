#include "platform/imageio/exif/ExifDirectory.h"

#include <algorithm>
#include <array>

namespace kestrine {

namespace {

constexpr std::size_t headerSize = 8;
constexpr std::size_t entrySize = 12;
constexpr std::uint32_t tiffMagic = 42;

/// Indexed by field type.
constexpr std::array<ExifTypeSize, 14> typeSizes{{
    {0, 0}, // no type has this number
    {1, 1}, // BYTE
    {1, 1}, // ASCII
    {2, 2}, // SHORT
    {4, 4}, // LONG
    {8, 4}, // RATIONAL
    {1, 1}, // SBYTE
    {1, 1}, // UNDEFINED
    {2, 2}, // SSHORT
    {4, 4}, // SLONG
    {8, 4}, // SRATIONAL
    {4, 4}, // FLOAT
    {8, 8}, // DOUBLE
    {4, 4}, // IFD
}};

} // namespace

std::optional<ExifTypeSize> exifTypeSize(std::uint16_t type) {
    if (type == exifUTF8)
        return typeSizes[exifText];
    if (type == 0 || type >= typeSizes.size())
        return std::nullopt;
    return typeSizes[type];
}

std::optional<ExifDirectories> ExifDirectories::of(ByteView block) {
    if (block.size() < headerSize || block[0] != block[1] || (block[0] != 'M' && block[0] != 'I'))
        return std::nullopt;
    ExifDirectories directories(block, block[0] == 'M');
    if (directories.unsignedOf(block.subspan(2, 2)) != tiffMagic)
        return std::nullopt;
    directories.mainOffset_ = directories.unsignedOf(block.subspan(4, 4));
    return directories;
}

std::uint32_t ExifDirectories::unsignedOf(ByteView bytes) const {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        number = number << 8 | (isBigEndian_ ? bytes[i] : bytes[bytes.size() - 1 - i]);
    return number;
}

std::optional<ExifEntry> ExifDirectories::entryAt(std::size_t position) const {
    const auto type = static_cast<std::uint16_t>(unsignedOf(block_.subspan(position + 2, 2)));
    const std::uint32_t count = unsignedOf(block_.subspan(position + 4, 4));
    const auto sizes = exifTypeSize(type);
    if (!sizes || count == 0)
        return std::nullopt;
    const std::uint64_t size = std::uint64_t{count} * sizes->value;
    const std::uint64_t offset = size <= 4 ? position + 8 : unsignedOf(block_.subspan(position + 8, 4));
    if (offset > block_.size() || size > block_.size() - offset)
        return std::nullopt;
    return ExifEntry{type, count, block_.subspan(offset, size)};
}

ExifDirectory ExifDirectories::directoryAt(std::uint64_t offset) const {
    ExifDirectory directory;
    if (offset < headerSize || offset > block_.size() - 2)
        return directory;
    const std::size_t first = offset + 2;
    const std::size_t stated = unsignedOf(block_.subspan(offset, 2));
    const std::size_t count = std::min(stated, (block_.size() - first) / entrySize);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t position = first + i * entrySize;
        if (const auto entry = entryAt(position))
            directory.insert_or_assign(static_cast<std::uint16_t>(unsignedOf(block_.subspan(position, 2))),
                                       *entry);
    }
    directory.isComplete = directory.size() == stated;
    return directory;
}

bool ExifDirectories::hasThumbnail() const {
    if (mainOffset_ < headerSize || mainOffset_ > block_.size() - 2)
        return false;
    const std::size_t next = mainOffset_ + 2 + unsignedOf(block_.subspan(mainOffset_, 2)) * entrySize;
    return next + 4 <= block_.size() && unsignedOf(block_.subspan(next, 4)) != 0;
}

ExifDirectory ExifDirectories::child(const ExifDirectory& parent, std::uint16_t tag) const {
    const auto pointer = parent.find(tag);
    if (pointer == parent.end() || (pointer->second.type != exifLong && pointer->second.type != exifPointer))
        return {};
    return directoryAt(unsignedOf(pointer->second.value.first(4)));
}

std::optional<double> ExifDirectories::number(const ExifDirectory& directory, std::uint16_t tag) const {
    const auto entry = directory.find(tag);
    if (entry == directory.end())
        return std::nullopt;
    const ByteView value = entry->second.value;
    if (entry->second.type == exifShort)
        return unsignedOf(value.first(2));
    if (entry->second.type == exifLong)
        return unsignedOf(value.first(4));
    if (entry->second.type != exifRational || unsignedOf(value.subspan(4, 4)) == 0)
        return std::nullopt;
    return double(unsignedOf(value.first(4))) / unsignedOf(value.subspan(4, 4));
}

} // namespace kestrine
