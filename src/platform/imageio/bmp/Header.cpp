#include "platform/imageio/bmp/Header.h"

#include <algorithm>
#include <array>
#include <bit>

namespace kestrine::bmp {

namespace {

/// Lengths of the headers. Each one extends the one before; headers of OS/2 have other lengths up to
/// longestOS2Header.
enum HeaderLength : std::uint32_t {
    coreHeader = 12,
    shortestInfoHeader = 16,
    infoHeader = 40,
    infoHeader2 = 52, ///< with colour masks
    infoHeader3 = 56, ///< with an alpha mask
    longestOS2Header = 64,
    infoHeader4 = 108, ///< with a calibrated colour space
    infoHeader5 = 124, ///< with an ICC profile
};

enum Compression : std::uint32_t {
    uncompressed = 0,
    runLength8 = 1,
    runLength4 = 2,
    bitFields = 3,
    alphaBitFields = 6
};

/// Bits per pixel without compression.
constexpr std::array<std::uint32_t, 7> plainBits = {1, 2, 4, 8, 16, 24, 32};

/// Longer profiles are ignored.
constexpr std::uint32_t maximumProfileLength = std::uint32_t{16} << 20;

/// The headers, filled up with zeros if those of the file are shorter. Offsets count from the start of the
/// file.
struct Fields {
    std::array<std::uint8_t, fileHeaderLength + infoHeader5> bytes{};
    std::uint32_t headerLength = 0; ///< including masks that follow the header

    std::uint32_t u16(std::size_t offset) const {
        return bytes[offset] | std::uint32_t{bytes[offset + 1]} << 8;
    }
    std::uint32_t u32(std::size_t offset) const { return u16(offset) | u16(offset + 2) << 16; }
    std::int32_t i32(std::size_t offset) const { return static_cast<std::int32_t>(u32(offset)); }
    std::uint64_t end() const { return fileHeaderLength + headerLength; }
    bool isCore() const { return headerLength == coreHeader; }
};

bool isHeaderLength(std::uint32_t length) {
    return length == coreHeader || (length >= shortestInfoHeader && length <= longestOS2Header)
           || length == infoHeader4 || length == infoHeader5;
}

/// In files with infoHeader the masks follow the header, at the offset where longer headers contain them.
std::uint32_t lengthWithMasks(std::uint32_t length, std::uint32_t compression) {
    if (length == infoHeader && compression == bitFields)
        return infoHeader2;
    if (length == infoHeader && compression == alphaBitFields)
        return infoHeader3;
    return length;
}

Result<Fields> readFields(const ByteReader& reader, bool hasFileHeader) {
    Fields fields;
    const std::size_t got = reader.readAt(0, fields.bytes);
    if (!hasFileHeader)
        std::fill_n(fields.bytes.begin(), fileHeaderLength, std::uint8_t{0});
    const std::uint32_t length = fields.u32(14);
    if (got >= fileHeaderLength + sizeof length && !isHeaderLength(length))
        return Failure{Reason::unsupported, "the BMP has a header of unknown length"};
    fields.headerLength = lengthWithMasks(length, length >= infoHeader ? fields.u32(30) : uncompressed);
    if (!isHeaderLength(length) || got < fields.end())
        return Failure{Reason::truncated, "the BMP file ends in its header"};
    std::fill(fields.bytes.begin() + static_cast<std::ptrdiff_t>(fields.end()), fields.bytes.end(),
              std::uint8_t{0});
    return fields;
}

Result<void> readSides(const Fields& fields, Header& header) {
    const std::int64_t width = fields.isCore() ? std::int64_t{fields.u16(18)} : fields.i32(18);
    const std::int64_t height = fields.isCore() ? std::int64_t{fields.u16(20)} : fields.i32(22);
    header.isTopDown = height < 0;
    const std::int64_t rows = header.isTopDown ? -height : height;
    if (width < 0)
        return Failure{Reason::malformed, "the BMP has a negative width"};
    if (width > maximumSide || rows > maximumSide)
        return Failure{Reason::tooLarge, "the BMP is too large"};
    header.width = static_cast<std::uint32_t>(width);
    header.height = static_cast<std::uint32_t>(rows);
    return {};
}

bool isOneRun(std::uint32_t mask) {
    return mask == 0 || std::has_single_bit((mask >> std::countr_zero(mask)) + 1ull);
}

Result<void> readMasks(const Fields& fields, bool given, Header& header) {
    if (!given) {
        header.masks = header.bitsPerPixel == 16 ? std::array<std::uint32_t, 4>{0x7C00, 0x03E0, 0x001F, 0}
                                                 : std::array<std::uint32_t, 4>{0xFF0000, 0xFF00, 0xFF, 0};
        return {};
    }
    header.masks = {fields.u32(54), fields.u32(58), fields.u32(62), fields.u32(66)};
    if (!std::ranges::all_of(header.masks, isOneRun))
        return Failure{Reason::malformed, "the BMP has a colour mask with gaps"};
    if ((header.masks[0] | header.masks[1] | header.masks[2]) == 0)
        return Failure{Reason::malformed, "the BMP has no colour masks"};
    return {};
}

Result<void> readPixelKind(const Fields& fields, Header& header) {
    const std::uint32_t bits = fields.isCore() ? fields.u16(24) : fields.u16(28);
    const std::uint32_t compression = fields.isCore() ? std::uint32_t{uncompressed} : fields.u32(30);
    header.bitsPerPixel = bits;
    header.isRunLength = (compression == runLength8 && bits == 8) || (compression == runLength4 && bits == 4);
    const bool hasMasks = (compression == bitFields || compression == alphaBitFields)
                          && (bits == 16 || bits == 32) && fields.headerLength >= infoHeader2
                          && fields.headerLength != longestOS2Header;
    const bool isPlain = compression == uncompressed && std::ranges::find(plainBits, bits) != plainBits.end();
    if (!header.isRunLength && !hasMasks && !isPlain)
        return Failure{Reason::unsupported, "the BMP has an unknown pixel format"};
    return readMasks(fields, hasMasks, header);
}

/// Sets the offset of the pixels, which follow the palette, and reads those colours of the palette that
/// indices can address.
void readPalette(const Fields& fields, const ByteReader& reader, Header& header) {
    const std::size_t entryLength = fields.isCore() ? 3 : 4;
    const std::uint64_t addressable = header.isIndexed() ? std::uint64_t{1} << header.bitsPerPixel : 0;
    const std::uint64_t declared = fields.isCore() ? 0 : fields.u32(46);
    const std::uint64_t stored = declared == 0 ? addressable : declared;
    header.pixelOffset = fields.u32(10);
    if (header.pixelOffset < fields.end())
        header.pixelOffset = fields.end() + stored * entryLength;
    const std::uint64_t room = (header.pixelOffset - fields.end()) / entryLength;
    Bytes entries(static_cast<std::size_t>(std::min({stored, addressable, room})) * entryLength);
    entries.resize(reader.readAt(fields.end(), entries));
    for (std::size_t i = 0; i + entryLength <= entries.size(); i += entryLength)
        header.palette.insert(header.palette.end(), {entries[i + 2], entries[i + 1], entries[i]});
}

/// The header has no white point; viewers use that of sRGB.
std::optional<ColorProfile> calibratedProfile(const Fields& fields) {
    const auto chromaticity = [&](std::size_t offset) {
        const double x = fields.u32(offset), y = fields.u32(offset + 4), z = fields.u32(offset + 8);
        return Chromaticities::Point{x / (x + y + z), y / (x + y + z)};
    };
    const std::uint32_t gamma = fields.u32(110); // with 16 fraction bits
    if (fields.u32(114) != gamma || fields.u32(118) != gamma)
        return std::nullopt;
    return ColorProfile::fromGamma(
        gamma / 65536.0, {sRGBChromaticities.white, chromaticity(74), chromaticity(86), chromaticity(98)},
        ColorModel::rgb);
}

std::optional<ColorProfile> embeddedProfile(const Fields& fields, const ByteReader& reader) {
    const std::uint32_t length = fields.u32(130);
    if (length > maximumProfileLength || length > reader.size())
        return std::nullopt;
    Bytes icc(length);
    if (reader.readAt(fileHeaderLength + std::uint64_t{fields.u32(126)}, icc) != length)
        return std::nullopt;
    return ColorProfile::fromICC(icc, ColorModel::rgb);
}

std::optional<ColorProfile> readProfile(const Fields& fields, const ByteReader& reader) {
    constexpr std::uint32_t calibrated = 0, embedded = 0x4D424544; // "MBED"
    if (fields.headerLength < infoHeader4)
        return std::nullopt;
    const std::uint32_t kind = fields.u32(70);
    if (kind == calibrated)
        return calibratedProfile(fields);
    return kind == embedded && fields.headerLength == infoHeader5 ? embeddedProfile(fields, reader)
                                                                  : std::nullopt;
}

Result<Header> readHeader(const ByteReader& reader, bool hasFileHeader) {
    Fields fields = TRY(readFields(reader, hasFileHeader));
    Header header{.profile = readProfile(fields, reader)};
    TRY(readSides(fields, header));
    TRY(readPixelKind(fields, header));
    readPalette(fields, reader, header);
    return header;
}

} // namespace

bool isBMP(ByteView head) {
    if (head.size() < fileHeaderLength + 4 || head[0] != 'B' || head[1] != 'M')
        return false;
    return isHeaderLength(head[14] | std::uint32_t{head[15]} << 8 | std::uint32_t{head[16]} << 16
                          | std::uint32_t{head[17]} << 24);
}

bool isBMPArray(ByteView head) {
    return head.size() > arrayHeaderLength && head[0] == 'B' && head[1] == 'A'
           && isBMP(head.subspan(arrayHeaderLength));
}

Result<Header> readHeader(const ByteReader& reader) { return readHeader(reader, true); }

Result<Header> readIconHeader(const ByteReader& reader) { return readHeader(reader, false); }

} // namespace kestrine::bmp
