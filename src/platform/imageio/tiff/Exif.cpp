#include "platform/imageio/tiff/Exif.h"

#include "platform/imageio/exif/ExifTags.h"

#include <algorithm>
#include <array>

namespace kestrine::tiff {

namespace {

/// Entries of the page that describe the picture and not how its pixels are stored.
constexpr std::array<std::uint16_t, 20> pageTags = {
    0x010d, // DocumentName
    exiftag::imageDescription,
    exiftag::make,
    exiftag::model,
    exiftag::orientation,
    exiftag::xResolution,
    exiftag::yResolution,
    exiftag::resolutionUnit,
    exiftag::software,
    exiftag::dateTime,
    exiftag::artist,
    0x013c, // HostComputer
    0x4746, // Rating
    0x4749, // RatingPercent
    exiftag::copyright,
    0x9c9b, // XPTitle
    0x9c9c, // XPComment
    0x9c9d, // XPAuthor
    0x9c9e, // XPKeywords
    0x9c9f, // XPSubject
};

/// Entries that every page may have.
constexpr std::array<std::uint16_t, 3> resolutionTags = {exiftag::xResolution, exiftag::yResolution,
                                                         exiftag::resolutionUnit};

/// Types that classic EXIF defines.
constexpr std::uint16_t firstType = 1, lastType = 12;
constexpr std::uint16_t longType = 4;

constexpr std::size_t maximumValueBytes = 65536;
constexpr std::size_t maximumExifBytes = 262144;

/// The block under construction: a header, then directories; a directory comes before the one that points to
/// it.
class ExifBlockBuilder {
public:
    explicit ExifBlockBuilder(bool isBigEndian) : isBigEndian_(isBigEndian) {
        block_.assign(2, isBigEndian ? 'M' : 'I');
        append(42, 2);
        append(0, 4);
    }

    struct Field {
        std::uint16_t tag, type;
        std::uint32_t count;
        Bytes values;
    };

    /// A pointer to the directory at `offset` of the block.
    Field pointer(std::uint16_t tag, std::uint32_t offset) const {
        Field field{tag, longType, 1, Bytes(4)};
        put(field.values.data(), offset, 4);
        return field;
    }

    /// Adds a directory with its values and returns where it begins.
    std::uint32_t add(std::vector<Field> fields) {
        std::ranges::stable_sort(fields, {}, &Field::tag);
        const auto begin = static_cast<std::uint32_t>(block_.size());
        std::size_t valuesAt = begin + 2 + 12 * fields.size() + 4;
        append(fields.size(), 2);
        for (const Field& field : fields)
            appendEntry(field, valuesAt);
        append(0, 4);
        for (const Field& field : fields)
            if (field.values.size() > 4)
                block_.insert(block_.end(), field.values.begin(), field.values.end());
        return begin;
    }

    Bytes finish(std::uint32_t main) {
        put(block_.data() + 4, main, 4);
        return std::move(block_);
    }

private:
    void appendEntry(const Field& field, std::size_t& valuesAt) {
        append(field.tag, 2);
        append(field.type, 2);
        append(field.count, 4);
        if (field.values.size() <= 4) {
            block_.insert(block_.end(), field.values.begin(), field.values.end());
            block_.insert(block_.end(), 4 - field.values.size(), 0);
        } else {
            append(valuesAt, 4);
            valuesAt += field.values.size();
        }
    }

    void append(std::uint64_t number, std::size_t bytes) {
        block_.resize(block_.size() + bytes);
        put(block_.data() + block_.size() - bytes, number, bytes);
    }

    void put(std::uint8_t* to, std::uint64_t number, std::size_t bytes) const {
        for (std::size_t i = 0; i < bytes; ++i)
            to[isBigEndian_ ? bytes - 1 - i : i] = static_cast<std::uint8_t>(number >> 8 * i);
    }

    const bool isBigEndian_;
    Bytes block_;
};

using Fields = std::vector<ExifBlockBuilder::Field>;

/// The entries of `directory` that `isWanted` accepts and whose values are complete, up to `room` bytes.
template <class Wanted>
Fields copied(const Structure& file, const Structure::Directory& directory, std::size_t& room,
              const Wanted& isWanted) {
    constexpr std::size_t entryBytes = 12;
    Fields fields;
    for (const Structure::Entry& entry : directory) {
        if (entry.type < firstType || entry.type > lastType || !isWanted(entry.tag) || room < entryBytes)
            continue;
        room -= entryBytes;
        Bytes values = file.values(entry, std::min(maximumValueBytes, room));
        room -= values.size();
        if (!values.empty())
            fields.push_back(
                {entry.tag, entry.type, static_cast<std::uint32_t>(entry.count), std::move(values)});
    }
    return fields;
}

} // namespace

Bytes exifOfTIFF(const Structure& file, std::uint64_t directory) {
    const Structure::Directory page = file.directoryAt(directory);
    return exifOfParts({file, page}, {file, file.child(page, exiftag::exifDirectoryPointer)});
}

Bytes exifOfParts(const DirectoryPlace& page, const DirectoryPlace& exif) {
    const auto isPageTag = [](std::uint16_t tag) { return std::ranges::count(pageTags, tag) > 0; };
    const bool saysSomething = std::ranges::any_of(page.entries, [&](const Structure::Entry& entry) {
        return (isPageTag(entry.tag) && std::ranges::count(resolutionTags, entry.tag) == 0)
               || entry.tag == exiftag::gpsPointer;
    });
    if ((exif.entries.empty() && !saysSomething) || page.file.isBigEndian() != exif.file.isBigEndian())
        return {};
    ExifBlockBuilder builder(page.file.isBigEndian());
    std::size_t room = maximumExifBytes;
    const auto isMovable = [](std::uint16_t tag) {
        return tag != exiftag::interoperabilityPointer && tag != exiftag::makerNote;
    };
    Fields pageFields = copied(page.file, page.entries, room, isPageTag);
    Fields exifFields = copied(exif.file, exif.entries, room, isMovable);
    const Fields interoperability =
        copied(exif.file, exif.file.child(exif.entries, exiftag::interoperabilityPointer), room, isMovable);
    const Fields gps = copied(page.file, page.file.child(page.entries, exiftag::gpsPointer), room, isMovable);
    if (!interoperability.empty())
        exifFields.push_back(
            builder.pointer(exiftag::interoperabilityPointer, builder.add(interoperability)));
    if (!exifFields.empty())
        pageFields.push_back(
            builder.pointer(exiftag::exifDirectoryPointer, builder.add(std::move(exifFields))));
    if (!gps.empty())
        pageFields.push_back(builder.pointer(exiftag::gpsPointer, builder.add(gps)));
    return builder.finish(builder.add(std::move(pageFields)));
}

} // namespace kestrine::tiff
