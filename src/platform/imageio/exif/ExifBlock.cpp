#include "platform/imageio/exif/ExifBlock.h"
#include "platform/imageio/exif/ExifDirectory.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace kestrine {

namespace {

enum ExifTag : std::uint16_t {
    interoperabilityIndex = 0x0001,
    orientation = 0x0112,
    xResolution = 0x011a,
    yResolution = 0x011b,
    resolutionUnit = 0x0128,
    exifDirectoryPointer = 0x8769,
    dateTime = 0x0132,
    artist = 0x013b,
    copyright = 0x8298,
    gpsPointer = 0x8825,
    dateTimeOriginal = 0x9003,
    dateTimeDigitized = 0x9004,
    colorSpace = 0xa001,
    pixelXDimension = 0xa002,
    pixelYDimension = 0xa003,
    interoperabilityPointer = 0xa005,
};

constexpr double unitNone = 1;
constexpr double unitCentimetre = 3;
constexpr double centimetresAnInch = 2.54;
constexpr double adobeRGB = 2;
constexpr double uncalibrated = 0xffff;

/// What is copied from the main directory. The JFIF segment of the file holds the resolution.
constexpr std::array<std::uint16_t, 8> carriedMainTags{
    0x010e, // ImageDescription
    0x010f, // Make
    0x0110, // Model
    orientation,
    0x0131, // Software
    dateTime,    artist, copyright,
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

constexpr std::array<std::uint16_t, 3> rightsTags{orientation, artist, copyright};

/// They identify the camera or its owner.
constexpr std::array<std::uint16_t, 3> ownerTags{
    0xa430, // CameraOwnerName
    0xa431, // BodySerialNumber
    0xa435, // LensSerialNumber
};

/// What is never copied from the other directories: offsets into the source, entries that depend on such
/// offsets, and entries that are written again.
constexpr std::array<std::uint16_t, 15> droppedTags{
    0x0111, // StripOffsets
    0x0117, // StripByteCounts
    0x0144, // TileOffsets
    0x0145, // TileByteCounts
    0x014a, // SubIFDs
    0x0201, // JPEGInterchangeFormat
    0x0202, // JPEGInterchangeFormatLength
    exifDirectoryPointer,
    gpsPointer,
    0x927c, // MakerNote; its inner offsets become wrong when it moves
    pixelXDimension,
    pixelYDimension,
    interoperabilityPointer,
    0xea1c, // Padding
    0xea1d, // OffsetSchema, a correction for the MakerNote
};

/// They describe only how the pixels or the block are stored.
constexpr std::array<std::uint16_t, 10> storageTags{
    xResolution,
    yResolution,
    resolutionUnit,
    0x0213, // YCbCrPositioning
    exifDirectoryPointer,
    gpsPointer,
    interoperabilityPointer,
    pixelXDimension,
    pixelYDimension,
    0xea1c, // Padding
};

/// A JPEG segment has at most 65535 bytes, including its length field and "Exif\0\0".
constexpr std::size_t largestBlock = 65533 - 6;
constexpr std::uint32_t blockHeaderSize = 8;

/// ExifTagReader skips larger directories. The entries that may be added stay within it.
constexpr std::size_t largestDirectory = 299;
constexpr std::size_t addedEntries = 3;

struct Field {
    std::uint16_t type;
    std::uint32_t count;
    Bytes value; ///< big-endian
};
using Fields = std::map<std::uint16_t, Field>;

struct CarriedFields {
    Fields main, exif, interoperability, gps;

    std::array<Fields*, 4> all() { return {&main, &exif, &interoperability, &gps}; }
};

template <class Unsigned>
void append(Bytes& out, Unsigned number) {
    for (int shift = 8 * (int{sizeof number} - 1); shift >= 0; shift -= 8)
        out.push_back(static_cast<std::uint8_t>(number >> shift));
}

template <class Unsigned>
Field fieldOf(std::uint16_t type, Unsigned number) {
    Field field{type, 1, {}};
    append(field.value, number);
    return field;
}
Field shortField(std::uint16_t number) { return fieldOf(exifShort, number); }
Field longField(std::uint32_t number) { return fieldOf(exifLong, number); }

Field fieldFrom(const ExifEntry& entry, bool isBigEndian) {
    Field field{entry.type, entry.count, Bytes(entry.value.begin(), entry.value.end())};
    const std::size_t unit = exifTypeSize(entry.type)->unit;
    for (std::size_t i = 0; !isBigEndian && i + unit <= field.value.size(); i += unit)
        std::ranges::reverse(std::span(field.value).subspan(i, unit));
    return field;
}

template <class List>
bool lists(const List& list, std::uint16_t tag) {
    return std::find(list.begin(), list.end(), tag) != list.end();
}

/// The entries whose tag `isCarried`, lowest tags first, up to the largest number for a directory.
template <class Predicate>
Fields select(const ExifDirectory& directory, bool isBigEndian, Predicate isCarried) {
    Fields fields;
    for (const auto& [tag, entry] : directory) {
        if (fields.size() == largestDirectory - addedEntries)
            break;
        if (isCarried(tag) && entry.type != exifPointer && entry.value.size() <= largestBlock)
            fields.emplace(tag, fieldFrom(entry, isBigEndian));
    }
    return fields;
}

bool isOutOfLine(const Field& field) { return field.value.size() > 4; }

/// Size in bytes outside the directory. Values begin at even offsets.
std::size_t sizeOutOfLine(const Field& field) {
    return isOutOfLine(field) ? (field.value.size() + 1) / 2 * 2 : 0;
}

std::uint32_t sizeOf(const Fields& fields) {
    if (fields.empty())
        return 0;
    std::size_t size = 2 + 12 * fields.size() + 4;
    for (const auto& [tag, field] : fields)
        size += sizeOutOfLine(field);
    return static_cast<std::uint32_t>(size);
}

void dropLargest(CarriedFields& carried) {
    Fields* owner = &carried.main;
    auto largest = owner->begin();
    for (Fields* fields : carried.all())
        for (auto field = fields->begin(); field != fields->end(); ++field)
            if (sizeOutOfLine(field->second) > sizeOutOfLine(largest->second))
                owner = fields, largest = field;
    owner->erase(largest);
}

/// Drops the largest values until the block fits. Directories of at most 299 entries fit by themselves, so
/// only values outside the entries are dropped, and the loop ends. The main directory must already hold its
/// pointer.
void dropUntilFitting(CarriedFields& carried) {
    const auto size = [&carried] {
        std::size_t sum = blockHeaderSize;
        for (const Fields* fields : carried.all())
            sum += sizeOf(*fields);
        return sum;
    };
    while (size() > largestBlock)
        dropLargest(carried);
}

void writeDirectory(Bytes& out, const Fields& fields) {
    if (fields.empty())
        return;
    std::size_t valueOffset = out.size() + 2 + 12 * fields.size() + 4;
    append(out, static_cast<std::uint16_t>(fields.size()));
    for (const auto& [tag, field] : fields) {
        append(out, tag);
        append(out, field.type);
        append(out, field.count);
        if (isOutOfLine(field)) {
            append(out, static_cast<std::uint32_t>(valueOffset));
        } else {
            out.insert(out.end(), field.value.begin(), field.value.end());
            out.resize(out.size() + 4 - field.value.size());
        }
        valueOffset += sizeOutOfLine(field);
    }
    append(out, std::uint32_t{0}); // no directory follows
    for (const auto& [tag, field] : fields)
        if (isOutOfLine(field)) {
            out.insert(out.end(), field.value.begin(), field.value.end());
            out.resize(out.size() + out.size() % 2);
        }
}

Bytes written(CarriedFields& carried) {
    const std::uint32_t exifOffset = blockHeaderSize + sizeOf(carried.main);
    if (!carried.exif.empty())
        carried.main.insert_or_assign(exifDirectoryPointer, longField(exifOffset));
    if (carried.interoperability.empty())
        carried.exif.erase(interoperabilityPointer);
    else
        carried.exif.insert_or_assign(interoperabilityPointer, longField(exifOffset + sizeOf(carried.exif)));
    const std::uint32_t gpsOffset = exifOffset + sizeOf(carried.exif) + sizeOf(carried.interoperability);
    if (!carried.gps.empty())
        carried.main.insert_or_assign(gpsPointer, longField(gpsOffset));
    Bytes out{'M', 'M', 0, 42};
    append(out, blockHeaderSize);
    writeDirectory(out, carried.main);
    writeDirectory(out, carried.exif);
    writeDirectory(out, carried.interoperability);
    writeDirectory(out, carried.gps);
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
    const ExifDirectory exif = source.child(main, exifDirectoryPointer);
    const ExifDirectory interoperability = source.child(exif, interoperabilityPointer);
    CarriedFields carried{select(main, isBigEndian, isCarriedFromMain),
                          select(exif, isBigEndian, isCarried),
                          select(interoperability, isBigEndian, isCarried),
                          {}};
    if (selection == ExifSelection::all)
        carried.gps = select(source.child(main, gpsPointer), isBigEndian, isCarried);
    const bool hasRights = carried.main.contains(artist) || carried.main.contains(copyright);
    const bool isEmpty =
        isForRights ? !hasRights : carried.main.empty() && exif.empty() && carried.gps.empty();
    if (isEmpty)
        return std::nullopt;
    return carried;
}

std::optional<Resolution> resolutionOf(const ExifDirectories& source, const ExifDirectory& main) {
    const auto horizontal = source.number(main, xResolution);
    const auto vertical = source.number(main, yResolution);
    const double unit = source.number(main, resolutionUnit).value_or(2);
    if (unit == unitNone || (!horizontal && !vertical))
        return std::nullopt;
    const double toInches = unit == unitCentimetre ? centimetresAnInch : 1;
    return plausibleResolution(horizontal.value_or(0) * toInches, vertical.value_or(0) * toInches);
}

bool saysAdobeRGB(const ExifDirectories& source, const ExifDirectory& exif) {
    const auto space = source.number(exif, colorSpace);
    if (space != uncalibrated)
        return space == adobeRGB;
    const ExifDirectory interoperability = source.child(exif, interoperabilityPointer);
    const auto index = interoperability.find(interoperabilityIndex);
    if (index == interoperability.end() || index->second.type != exifText)
        return false;
    constexpr std::string_view optionalFile = "R03";
    const ByteView text = index->second.value;
    return text.size() >= 3 && std::equal(optionalFile.begin(), optionalFile.end(), text.begin());
}

int orientationOf(const ExifDirectories& source, const ExifDirectory& main) {
    const double value = source.number(main, orientation).value_or(1);
    return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

/// Whether a string has the form of a date, with digits in the places of digits.
bool isDate(std::string_view text) {
    constexpr std::string_view form = "0000:00:00 00:00:00";
    return std::ranges::equal(
        text, form, [](char c, char place) { return place == '0' ? c >= '0' && c <= '9' : c == place; });
}

/// The string in an entry, up to its zero byte; empty if it is no date.
std::string dateIn(const ExifDirectory& directory, std::uint16_t tag) {
    const auto entry = directory.find(tag);
    if (entry == directory.end() || entry->second.type != exifText)
        return "";
    const ByteView value = entry->second.value;
    const std::string text(value.begin(), std::ranges::find(value, std::uint8_t{0}));
    return isDate(text) && !text.starts_with("0000") ? text : "";
}

} // namespace

ExifFacts readExifFacts(ByteView block) {
    ExifFacts facts;
    const auto source = ExifDirectories::of(block);
    if (!source)
        return facts;
    const ExifDirectory main = source->main();
    facts.resolution = resolutionOf(*source, main);
    facts.orientation = orientationOf(*source, main);
    facts.isAdobeRGB = saysAdobeRGB(*source, source->child(main, exifDirectoryPointer));
    return facts;
}

Bytes uprightExif(Bytes block) {
    const auto source = ExifDirectories::of(block);
    if (!source)
        return block;
    const ExifDirectory main = source->main();
    const auto entry = main.find(orientation);
    if (entry == main.end() || entry->second.value.empty())
        return block;
    const ByteView value = entry->second.value;
    const std::size_t unit = exifTypeSize(entry->second.type)->unit;
    const std::span<std::uint8_t> first =
        std::span(block).subspan(static_cast<std::size_t>(value.data() - block.data()), unit);
    std::ranges::fill(first, std::uint8_t{0});
    (source->isBigEndian() ? first.back() : first.front()) = 1;
    return block;
}

std::string dateTakenIn(ByteView block) {
    const auto source = ExifDirectories::of(block);
    if (!source)
        return "";
    const ExifDirectory exif = source->child(source->main(), exifDirectoryPointer);
    const std::string original = dateIn(exif, dateTimeOriginal);
    return original.empty() ? dateIn(exif, dateTimeDigitized) : original;
}

Bytes carriedExif(ByteView block, std::uint32_t width, std::uint32_t height, bool turned,
                  ExifSelection selection) {
    const auto source = ExifDirectories::of(block);
    if (!source)
        return {};
    std::optional<CarriedFields> carried = selectFields(*source, selection);
    if (!carried)
        return {};
    if (turned)
        carried->main.insert_or_assign(orientation, shortField(1));
    if (selection != ExifSelection::rights) {
        carried->exif.insert_or_assign(pixelXDimension, longField(width));
        carried->exif.insert_or_assign(pixelYDimension, longField(height));
    }
    if (!carried->exif.empty())
        carried->main.insert_or_assign(exifDirectoryPointer,
                                       longField(0)); // offsets follow when sizes are known
    if (!carried->interoperability.empty())
        carried->exif.insert_or_assign(interoperabilityPointer, longField(0));
    if (!carried->gps.empty())
        carried->main.insert_or_assign(gpsPointer, longField(0));
    dropUntilFitting(*carried);
    return written(*carried);
}

bool keepsWholeExif(ByteView block, ExifSelection selection) {
    const auto source = ExifDirectories::of(block);
    if (!source)
        return block.empty();
    const CarriedFields kept = selectFields(*source, selection).value_or(CarriedFields{});
    const auto keeps = [](const Fields& fields, const ExifDirectory& directory) {
        return std::ranges::all_of(directory, [&](const auto& entry) {
            return fields.contains(entry.first) || lists(storageTags, entry.first);
        });
    };
    const ExifDirectory main = source->main(), exif = source->child(main, exifDirectoryPointer);
    return !source->hasThumbnail() && keeps(kept.main, main) && keeps(kept.exif, exif)
           && keeps(kept.interoperability, source->child(exif, interoperabilityPointer))
           && keeps(kept.gps, source->child(main, gpsPointer));
}

} // namespace kestrine
