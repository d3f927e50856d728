#include "platform/imageio/exif/WrittenDirectory.h"

#include "platform/host/BigEndian.h"
#include "platform/imageio/exif/ExifDirectory.h"

namespace kestrine {

namespace {

constexpr std::size_t entryBytes = 12, countBytes = 2, nextOffsetBytes = 4, bytesInEntry = 4;

std::size_t sizeOfEntries(const ExifFields& fields) {
    return countBytes + entryBytes * fields.size() + nextOffsetBytes;
}

} // namespace

std::size_t ExifField::sizeOutside() const {
    return value.size() <= bytesInEntry ? 0 : (value.size() + 1) / 2 * 2;
}

ExifField exifShortField(std::uint16_t number) {
    ExifField field{exifShort, 1, {}};
    appendBigEndian(field.value, number, 2);
    return field;
}

ExifField exifLongField(std::uint32_t number) {
    ExifField field{exifLong, 1, {}};
    appendBigEndian(field.value, number, 4);
    return field;
}

std::uint32_t sizeOfDirectory(const ExifFields& fields) {
    if (fields.empty())
        return 0;
    std::size_t size = sizeOfEntries(fields);
    for (const auto& [tag, field] : fields)
        size += field.sizeOutside();
    return static_cast<std::uint32_t>(size);
}

void appendDirectory(Bytes& block, const ExifFields& fields) {
    if (fields.empty())
        return;
    std::size_t valueOffset = block.size() + sizeOfEntries(fields);
    appendBigEndian(block, fields.size(), countBytes);
    for (const auto& [tag, field] : fields) {
        appendBigEndian(block, tag, 2);
        appendBigEndian(block, field.type, 2);
        appendBigEndian(block, field.count, 4);
        if (field.sizeOutside() > 0) {
            appendBigEndian(block, valueOffset, bytesInEntry);
        } else {
            block.insert(block.end(), field.value.begin(), field.value.end());
            block.resize(block.size() + bytesInEntry - field.value.size());
        }
        valueOffset += field.sizeOutside();
    }
    appendBigEndian(block, 0, nextOffsetBytes);
    for (const auto& [tag, field] : fields)
        if (field.sizeOutside() > 0) {
            block.insert(block.end(), field.value.begin(), field.value.end());
            block.resize(block.size() + block.size() % 2);
        }
}

} // namespace kestrine
