#include "platform/imageio/exif/CarriedExif.h"

#include "platform/host/BigEndian.h"
#include "platform/imageio/exif/ExifDirectory.h"
#include "platform/imageio/exif/ExifTags.h"
#include "platform/imageio/exif/ValueOrder.h"
#include "platform/imageio/exif/WrittenDirectory.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace kestrine {

namespace {

/// Tags that are copied from the main directory. The JFIF segment of the file holds the resolution.
constexpr std::array<std::uint16_t, 8> carriedMainTags{
    exiftag::imageDescription, exiftag::make,     exiftag::model,  exiftag::orientation,
    exiftag::software,         exiftag::dateTime, exiftag::artist, exiftag::copyright,
};

/// Further tags of the main directory, which only ExifSelection::all copies.
constexpr std::array<std::uint16_t, 9> furtherMainTags{
    0x010d, // DocumentName
    0x013c, // HostComputer
    0x4746, // Rating
    0x4749, // RatingPercent
    0x9c9b, // XPTitle
    0x9c9c, // XPComment
    0x9c9d, // XPAuthor
    0x9c9e, // XPKeywords
    0x9c9f, // XPSubject
};

constexpr std::array<std::uint16_t, 3> rightsTags{exiftag::orientation, exiftag::artist, exiftag::copyright};

/// Tags that identify the camera or its owner.
constexpr std::array<std::uint16_t, 5> ownerTags{
    0xa430, // CameraOwnerName
    0xa431, // BodySerialNumber
    0xa435, // LensSerialNumber
    0xfde8, // OwnerName, as some raw converters write it
    0xfde9, // SerialNumber, as above
};

/// Tags that are never copied from the other directories: offsets into the source, entries that depend on
/// such offsets, and entries that are written again.
constexpr std::array<std::uint16_t, 13> droppedTags{
    0x0111, // StripOffsets
    0x0117, // StripByteCounts
    0x0144, // TileOffsets
    0x0145, // TileByteCounts
    0x014a, // SubIFDs
    0x0201, // JPEGInterchangeFormat
    0x0202, // JPEGInterchangeFormatLength
    exiftag::exifDirectoryPointer,
    exiftag::gpsPointer,
    exiftag::makerNote, // its inner offsets become wrong when it moves
    exiftag::interoperabilityPointer,
    0xea1c, // Padding
    0xea1d, // OffsetSchema, a correction for the MakerNote
};

/// Tags for places in the picture and the size of the sensor's pixels. They become wrong when its size
/// changes or it is turned. Presets copy them unchanged.
constexpr std::array<std::uint16_t, 5> placeTags{
    exiftag::subjectArea,           exiftag::focalPlaneXResolution,
    exiftag::focalPlaneYResolution, exiftag::focalPlaneResolutionUnit,
    exiftag::subjectLocation,
};

/// Tags that only describe how the pixels or the block are stored.
constexpr std::array<std::uint16_t, 10> storageTags{
    exiftag::xResolution,
    exiftag::yResolution,
    exiftag::resolutionUnit,
    0x0213, // YCbCrPositioning
    exiftag::exifDirectoryPointer,
    exiftag::gpsPointer,
    exiftag::interoperabilityPointer,
    exiftag::pixelXDimension,
    exiftag::pixelYDimension,
    0xea1c, // Padding
};

/// A JPEG segment has at most 65535 bytes, including its length field and "Exif\0\0".
constexpr std::size_t largestBlock = 65533 - 6;
constexpr std::uint32_t blockHeaderSize = 8;
constexpr std::uint16_t sRGB = 1; // as a colour space

/// ExifTagReader skips larger directories. The limit includes the entries that may be added.
constexpr std::size_t largestDirectory = 299;
constexpr std::size_t addedEntries = 3;

struct CarriedFields {
    ExifFields main, exif, interoperability, gps;

    std::array<ExifFields*, 4> all() { return {&main, &exif, &interoperability, &gps}; }
};

template <class List>
bool lists(const List& list, std::uint16_t tag) {
    return std::find(list.begin(), list.end(), tag) != list.end();
}

ExifField fieldFrom(std::uint16_t tag, const ExifEntry& entry, bool isBigEndian) {
    ExifField field{entry.type, entry.count, Bytes(entry.value.begin(), entry.value.end())};
    if (!isBigEndian)
        exchangeByteOrder(tag, entry.type, field.value);
    return field;
}

/// The entries whose tag `isCarried`, lowest tags first, up to the largest number for a directory.
template <class Predicate>
ExifFields select(const ExifDirectory& directory, bool isBigEndian, Predicate isCarried) {
    ExifFields fields;
    for (const auto& [tag, entry] : directory) {
        if (fields.size() == largestDirectory - addedEntries)
            break;
        if (isCarried(tag) && entry.type != exifPointer && entry.value.size() <= largestBlock)
            fields.emplace(tag, fieldFrom(tag, entry, isBigEndian));
    }
    return fields;
}

void dropLargest(CarriedFields& carried) {
    ExifFields* owner = &carried.main;
    auto largest = owner->begin();
    for (ExifFields* fields : carried.all())
        for (auto field = fields->begin(); field != fields->end(); ++field)
            if (field->second.sizeOutside() > largest->second.sizeOutside())
                owner = fields, largest = field;
    owner->erase(largest);
}

/// Drops the largest values until the block fits. Directories of at most 299 entries fit by themselves, so
/// only values outside the entries are dropped, and the loop ends. The main directory must already hold its
/// pointer.
void dropUntilFitting(CarriedFields& carried) {
    const auto size = [&carried] {
        std::size_t sum = blockHeaderSize;
        for (const ExifFields* fields : carried.all())
            sum += sizeOfDirectory(*fields);
        return sum;
    };
    while (size() > largestBlock)
        dropLargest(carried);
}

Bytes written(CarriedFields& carried) {
    const std::uint32_t exifOffset = blockHeaderSize + sizeOfDirectory(carried.main);
    if (!carried.exif.empty())
        carried.main.insert_or_assign(exiftag::exifDirectoryPointer, exifLongField(exifOffset));
    if (carried.interoperability.empty())
        carried.exif.erase(exiftag::interoperabilityPointer);
    else
        carried.exif.insert_or_assign(exiftag::interoperabilityPointer,
                                      exifLongField(exifOffset + sizeOfDirectory(carried.exif)));
    const std::uint32_t gpsOffset =
        exifOffset + sizeOfDirectory(carried.exif) + sizeOfDirectory(carried.interoperability);
    if (!carried.gps.empty())
        carried.main.insert_or_assign(exiftag::gpsPointer, exifLongField(gpsOffset));
    Bytes out{'M', 'M', 0, 42};
    appendBigEndian(out, blockHeaderSize, 4);
    appendDirectory(out, carried.main);
    appendDirectory(out, carried.exif);
    appendDirectory(out, carried.interoperability);
    appendDirectory(out, carried.gps);
    return out;
}

/// What is copied from the source; nullopt if it has no Exif sub-directory and no main entry to copy.
std::optional<CarriedFields> selectFields(const ExifDirectories& source, ExifSelection selection) {
    const bool isForRights = selection == ExifSelection::rights;
    const bool dropsOwner = selection == ExifSelection::withoutOwner;
    const auto isCarriedFromMain = [&](std::uint16_t tag) {
        return isForRights ? lists(rightsTags, tag)
                           : lists(carriedMainTags, tag)
                                 || (selection == ExifSelection::all && lists(furtherMainTags, tag));
    };
    const auto isCarried = [&](std::uint16_t tag) {
        return !isForRights && !lists(droppedTags, tag) && !(dropsOwner && lists(ownerTags, tag));
    };
    const bool isBigEndian = source.isBigEndian();
    const ExifDirectory main = source.main();
    const ExifDirectory exif = source.child(main, exiftag::exifDirectoryPointer);
    const ExifDirectory interoperability = source.child(exif, exiftag::interoperabilityPointer);
    CarriedFields carried{select(main, isBigEndian, isCarriedFromMain),
                          select(exif, isBigEndian, isCarried),
                          select(interoperability, isBigEndian, isCarried),
                          {}};
    if (selection == ExifSelection::all)
        carried.gps = select(source.child(main, exiftag::gpsPointer), isBigEndian, isCarried);
    const bool isEmpty = carried.main.empty() && (isForRights || (exif.empty() && carried.gps.empty()));
    if (isEmpty)
        return std::nullopt;
    return carried;
}

/// Whether the directory only says that the picture is upright.
bool isOnlyUpright(const ExifFields& main) {
    return main.size() == 1 && main.begin()->first == exiftag::orientation
           && main.begin()->second.value == exifShortField(1).value;
}

/// Updates the fields that are wrong for `result`.
void update(CarriedFields& carried, const ExifResult& result, ExifSelection selection) {
    if (result.isTurned)
        carried.main.insert_or_assign(exiftag::orientation, exifShortField(1));
    if (selection == ExifSelection::rights)
        return;
    if (result.width > 0) {
        carried.exif.insert_or_assign(exiftag::pixelXDimension, exifLongField(result.width));
        carried.exif.insert_or_assign(exiftag::pixelYDimension, exifLongField(result.height));
    }
    if (selection != ExifSelection::camera && (result.isTurned || result.isResized))
        for (const std::uint16_t tag : placeTags)
            carried.exif.erase(tag);
    if (!result.isInSRGB)
        return;
    carried.interoperability.clear(); // it names the colour space as well
    if (carried.exif.contains(exiftag::colorSpace))
        carried.exif.insert_or_assign(exiftag::colorSpace, exifShortField(sRGB));
}

} // namespace

Bytes carriedExif(ByteView block, const ExifResult& result, ExifSelection selection) {
    const auto source = ExifDirectories::of(block);
    if (!source)
        return {};
    std::optional<CarriedFields> carried = selectFields(*source, selection);
    if (!carried)
        return {};
    update(*carried, result, selection);
    if (selection == ExifSelection::rights && isOnlyUpright(carried->main))
        return {};
    const ExifField unknownOffset = exifLongField(0); // offsets follow when sizes are known
    if (!carried->exif.empty())
        carried->main.insert_or_assign(exiftag::exifDirectoryPointer, unknownOffset);
    if (!carried->interoperability.empty())
        carried->exif.insert_or_assign(exiftag::interoperabilityPointer, unknownOffset);
    if (!carried->gps.empty())
        carried->main.insert_or_assign(exiftag::gpsPointer, unknownOffset);
    dropUntilFitting(*carried);
    return written(*carried);
}

bool keepsWholeExif(ByteView block, ExifSelection selection) {
    const auto source = ExifDirectories::of(block);
    if (!source)
        return block.empty();
    const CarriedFields kept = selectFields(*source, selection).value_or(CarriedFields{});
    const auto keeps = [](const ExifFields& fields, const ExifDirectory& directory) {
        return directory.isComplete && std::ranges::all_of(directory, [&](const auto& entry) {
                   return fields.contains(entry.first) || lists(storageTags, entry.first);
               });
    };
    const ExifDirectory main = source->main(), exif = source->child(main, exiftag::exifDirectoryPointer);
    return !source->hasThumbnail() && keeps(kept.main, main) && keeps(kept.exif, exif)
           && keeps(kept.interoperability, source->child(exif, exiftag::interoperabilityPointer))
           && keeps(kept.gps, source->child(main, exiftag::gpsPointer));
}

} // namespace kestrine
