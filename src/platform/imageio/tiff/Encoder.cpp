// TIFF: classic, little-endian, uncompressed, in strips of about 64 KiB.
// Every size is known beforehand, so the layout is computed first and the file is then written in one pass:
// header, directory, values that are too long for their entry, directories of EXIF data, strips.
#include "platform/host/LittleEndian.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/exif/ExifDirectory.h"
#include "platform/imageio/exif/ExifTags.h"
#include "platform/imageio/tiff/ExifFields.h"
#include "platform/imageio/tiff/Tags.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

namespace kestrine::tiff {

namespace {

constexpr std::uint32_t headerBytes = 8;
constexpr std::size_t stripBytes = 65536;

using Field = StoredField;

Field fieldOf(std::uint16_t tag, ExifType type, std::size_t count) {
    return {tag, type, static_cast<std::uint32_t>(count), {}};
}

Field shorts(std::uint16_t tag, std::span<const std::uint16_t> numbers) {
    Field field = fieldOf(tag, exifShort, numbers.size());
    for (const std::uint16_t number : numbers)
        appendLittleEndian(field.values, number, 2);
    return field;
}

Field shortNumber(std::uint16_t tag, std::uint16_t number) { return shorts(tag, {&number, 1}); }

Field longs(std::uint16_t tag, std::span<const std::uint32_t> numbers) {
    Field field = fieldOf(tag, exifLong, numbers.size());
    field.values.reserve(4 * numbers.size());
    for (const std::uint32_t number : numbers)
        appendLittleEndian(field.values, number, 4);
    return field;
}

Field longNumber(std::uint16_t tag, std::uint32_t number) { return longs(tag, {&number, 1}); }

/// `number` (1 to 100000) by continued fractions: exact for all simple ratios, such as 72 x 1201 / 1200. It
/// is computed from sizes in single precision, which are accurate to 1e-7.
Field rational(std::uint16_t tag, double number) {
    constexpr double closeEnough = 1e-7, largestTerm = 1e9;
    std::uint64_t numerator = 1, denominator = 0, numeratorBefore = 0, denominatorBefore = 1;
    for (double rest = number; rest < largestTerm;) {
        const auto whole = static_cast<std::uint64_t>(rest);
        const std::uint64_t n = whole * numerator + numeratorBefore,
                            d = whole * denominator + denominatorBefore;
        if (std::max(n, d) > std::numeric_limits<std::uint32_t>::max())
            break;
        numeratorBefore = std::exchange(numerator, n);
        denominatorBefore = std::exchange(denominator, d);
        if (std::abs(static_cast<double>(n) / static_cast<double>(d) - number) <= closeEnough * number)
            break;
        rest = 1 / (rest - static_cast<double>(whole));
    }
    Field field = fieldOf(tag, exifRational, 1);
    appendLittleEndian(field.values, static_cast<std::uint32_t>(numerator), 4);
    appendLittleEndian(field.values, static_cast<std::uint32_t>(denominator), 4);
    return field;
}

struct Strips {
    std::uint32_t rowsEach, count;
    std::uint64_t bytesEach, bytesInAll;

    explicit Strips(const RowFormat& format)
        : rowsEach(static_cast<std::uint32_t>(
            std::clamp<std::size_t>(stripBytes / format.bytesPerRow(), 1, format.height))),
          count((format.height + rowsEach - 1) / rowsEach),
          bytesEach(std::uint64_t{rowsEach} * format.bytesPerRow()),
          bytesInAll(std::uint64_t{format.height} * format.bytesPerRow()) {}

    std::vector<std::uint32_t> offsets(std::uint64_t first) const {
        std::vector<std::uint32_t> all(count);
        for (std::uint32_t i = 0; i < count; ++i)
            all[i] = static_cast<std::uint32_t>(first + i * bytesEach);
        return all;
    }
    std::vector<std::uint32_t> sizes() const {
        std::vector<std::uint32_t> all(count, static_cast<std::uint32_t>(bytesEach));
        all.back() = static_cast<std::uint32_t>(bytesInAll - (count - 1) * bytesEach);
        return all;
    }
};

/// The picture's tags; the offsets of its strips are not known yet.
std::vector<Field> fieldsOf(const RowFormat& format, const EncodingOptions& options, const Strips& strips) {
    constexpr std::uint16_t uncompressed = 1, blackIsZero = 1, rgb = 2, inch = 2, interleaved = 1,
                            straightAlpha = 2;
    const auto channels = static_cast<std::uint16_t>(format.channels());
    const std::vector<std::uint16_t> bits(channels, static_cast<std::uint16_t>(8 * format.bytesPerSample()));
    const Resolution resolution =
        plausibleResolution(options.resolution.horizontal, options.resolution.vertical);
    std::vector<Field> fields = {
        longNumber(tag::imageWidth, format.width),
        longNumber(tag::imageLength, format.height),
        shorts(tag::bitsPerSample, bits),
        shortNumber(tag::compression, uncompressed),
        shortNumber(tag::photometricInterpretation, format.model == ColorModel::rgb ? rgb : blackIsZero),
        longs(tag::stripOffsets, strips.offsets(0)),
        shortNumber(tag::samplesPerPixel, channels),
        longNumber(tag::rowsPerStrip, strips.rowsEach),
        longs(tag::stripByteCounts, strips.sizes()),
        rational(exiftag::xResolution, resolution.horizontal),
        rational(exiftag::yResolution, resolution.vertical),
        shortNumber(tag::planarConfiguration, interleaved),
        shortNumber(exiftag::resolutionUnit, inch),
    };
    if (format.hasAlpha)
        fields.push_back(shortNumber(tag::extraSamples, straightAlpha));
    if (options.profile) {
        const ByteView icc = options.profile->bytes();
        fields.push_back(fieldOf(tag::iccProfile, exifUndefined, icc.size()));
        fields.back().values.assign(icc.begin(), icc.end());
    }
    return fields;
}

/// Adds an entry unless there is one with this tag; the tags stay sorted.
void add(StoredDirectory& directory, Field field) {
    const auto place = std::ranges::lower_bound(directory, field.tag, {}, &Field::tag);
    if (place == directory.end() || place->tag != field.tag)
        directory.insert(place, std::move(field));
}

/// The directories of the file, in the order in which they follow its header, and where the strips begin.
struct Layout {
    std::vector<StoredDirectory> directories; ///< that of the picture first
    std::uint64_t firstStrip = headerBytes;   ///< 64 bits wide until it is known that they fit 32 bits
};

/// Sets the value of a field of which the directory has one with this tag.
void set(StoredDirectory& directory, Field field) {
    *std::ranges::find(directory, field.tag, &Field::tag) = std::move(field);
}

Layout layoutOf(const RowFormat& format, const EncodingOptions& options, const Strips& strips) {
    ExifFields exif = exifFields(options.exif);
    StoredDirectory page = fieldsOf(format, options, strips);
    for (Field& field : exif.page)
        add(page, std::move(field));
    struct Link {
        StoredDirectory& from;
        std::uint16_t pointer;
        StoredDirectory& to;
    };
    const std::array links = {Link{exif.exif, exiftag::interoperabilityPointer, exif.interoperability},
                              Link{page, exiftag::exifDirectoryPointer, exif.exif},
                              Link{page, exiftag::gpsPointer, exif.gps}};
    // The pointers count for the length of the page, on which their values depend.
    for (const auto& [from, pointer, to] : links)
        if (!to.empty())
            add(from, longNumber(pointer, 0));
    Layout layout;
    layout.firstStrip += storedBytes(page);
    for (const auto& [from, pointer, to] : links)
        if (!to.empty()) {
            set(from, longNumber(pointer, static_cast<std::uint32_t>(layout.firstStrip)));
            layout.firstStrip += storedBytes(to);
        }
    set(page, longs(tag::stripOffsets, strips.offsets(layout.firstStrip)));
    for (StoredDirectory* directory : {&page, &exif.interoperability, &exif.exif, &exif.gps})
        if (!directory->empty())
            layout.directories.push_back(std::move(*directory));
    return layout;
}

/// Everything before the strips.
Bytes headOf(const Layout& layout) {
    Bytes head = {'I', 'I', 42, 0};
    appendLittleEndian(head, headerBytes, 4);
    for (const StoredDirectory& directory : layout.directories)
        appendDirectory(head, directory);
    return head;
}

/// Converts 16-bit samples from the byte order of a big-endian machine to the file's.
void makeLittleEndian(std::span<std::uint8_t> row, SampleDepth depth) {
    if (std::endian::native == std::endian::little || depth == SampleDepth::bits8)
        return;
    for (std::size_t i = 0; i + 1 < row.size(); i += 2)
        std::swap(row[i], row[i + 1]);
}

} // namespace

Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file) {
    const RowFormat& format = rows.format();
    if (!format.isWithinLimits())
        return Failure{format.pixels() == 0 ? Reason::empty : Reason::tooLarge,
                       "a picture of this size cannot become a TIFF"};
    const Strips strips(format);
    const Layout layout = layoutOf(format, options, strips);
    const std::uint64_t fileBytes = layout.firstStrip + strips.bytesInAll;
    if (fileBytes > std::numeric_limits<std::uint32_t>::max())
        return Failure{Reason::tooLarge, "a TIFF file cannot have more than 4 GiB"};
    TRY(file.write(headOf(layout)));
    Bytes strip;
    for (std::uint32_t y = 0; y < format.height; ++y) {
        strip.resize(strip.size() + format.bytesPerRow());
        const std::span<std::uint8_t> row = std::span(strip).last(format.bytesPerRow());
        TRY(rows.readRow(row));
        makeLittleEndian(row, format.depth);
        if (strip.size() < strips.bytesEach && y + 1 < format.height)
            continue;
        TRY(file.write(strip));
        strip.clear();
    }
    return {};
}

} // namespace kestrine::tiff
