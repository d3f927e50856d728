#include "platform/imageio/tiff/ExifFields.h"

#include "platform/imageio/exif/ExifTags.h"
#include "platform/imageio/exif/ValueOrder.h"
#include "platform/imageio/tiff/Structure.h"

#include <algorithm>
#include <array>

namespace kestrine::tiff {

namespace {

/// These are written anew, or only compressed files have them: how components are stored, and the sides.
constexpr std::array<std::uint16_t, 7> leftOut = {
    exiftag::exifDirectoryPointer,
    exiftag::gpsPointer,
    exiftag::interoperabilityPointer,
    0x9101, // ComponentsConfiguration
    0x9102, // CompressedBitsPerPixel
    exiftag::pixelXDimension,
    exiftag::pixelYDimension,
};
constexpr std::size_t longestValue = 65536;

/// The entries in little-endian order. Those whose values are not complete are left out.
StoredDirectory storedDirectory(const Structure& block, const Structure::Directory& directory) {
    StoredDirectory stored;
    for (const Structure::Entry& entry : directory) {
        if (std::ranges::count(leftOut, entry.tag) > 0)
            continue;
        Bytes values = block.values(entry, longestValue);
        if (values.empty())
            continue;
        if (block.isBigEndian())
            exchangeByteOrder(entry.tag, entry.type, values);
        stored.push_back({entry.tag, entry.type, static_cast<std::uint32_t>(entry.count), std::move(values)});
    }
    std::ranges::stable_sort(stored, {}, &StoredField::tag);
    return stored;
}

} // namespace

ExifFields exifFields(ByteView block) {
    if (block.empty())
        return {};
    const Structure structure(readerOfBytes(Bytes(block.begin(), block.end())));
    const std::vector<std::uint64_t> pages = structure.chain().pages;
    if (pages.empty())
        return {};
    const Structure::Directory page = structure.directoryAt(pages.front());
    const Structure::Directory exif = structure.child(page, exiftag::exifDirectoryPointer);
    return {.page = storedDirectory(structure, page),
            .exif = storedDirectory(structure, exif),
            .interoperability =
                storedDirectory(structure, structure.child(exif, exiftag::interoperabilityPointer)),
            .gps = storedDirectory(structure, structure.child(page, exiftag::gpsPointer))};
}

} // namespace kestrine::tiff
