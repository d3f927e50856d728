#include "platform/imageio/tiff/ExifFields.h"

#include "platform/imageio/tiff/Structure.h"

#include <algorithm>
#include <array>

namespace kestrine::tiff {

namespace {

/// Entries that point to other directories.
enum Child : std::uint16_t { exifChild = 34665, gpsChild = 34853, interoperabilityChild = 40965 };
/// These are written anew, or only compressed files have them: how components are stored, and the sides.
constexpr std::array<std::uint16_t, 7> leftOut = {exifChild, gpsChild, interoperabilityChild, 37121, 37122,
                                                  40962,     40963};
constexpr std::size_t longestValue = 65536;

/// The length of the numbers of which values of a type consist. A fraction has two.
std::size_t bytesPerNumber(std::uint16_t type) {
    constexpr std::array<std::uint8_t, 13> bytes = {1, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4, 4, 8};
    return type < bytes.size() ? bytes[type] : 1;
}

void reverseNumbers(Bytes& values, std::size_t bytes) {
    for (auto at = values.begin(); at < values.end(); at += static_cast<std::ptrdiff_t>(bytes))
        std::reverse(at, at + static_cast<std::ptrdiff_t>(bytes));
}

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
            reverseNumbers(values, bytesPerNumber(entry.type));
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
    const Structure::Directory exif = structure.child(page, exifChild);
    return {.page = storedDirectory(structure, page),
            .exif = storedDirectory(structure, exif),
            .interoperability = storedDirectory(structure, structure.child(exif, interoperabilityChild)),
            .gps = storedDirectory(structure, structure.child(page, gpsChild))};
}

} // namespace kestrine::tiff
