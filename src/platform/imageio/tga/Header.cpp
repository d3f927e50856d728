#include "platform/imageio/tga/Header.h"

#include "platform/host/LittleEndian.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace kestrine::tga {

namespace {

constexpr std::size_t headerLength = 18;

/// The stored fields.
struct Fields {
    unsigned idLength, mapType, imageType, firstColor, colors, colorBits, width, height, bits, descriptor;

    explicit Fields(ByteView head)
        : idLength(head[0]), mapType(head[1]), imageType(head[2]), firstColor(u16(head, 3)),
          colors(u16(head, 5)), colorBits(head[7]), width(u16(head, 12)), height(u16(head, 14)),
          bits(head[16]), descriptor(head[17]) {}

    static unsigned u16(ByteView head, std::size_t at) {
        return static_cast<unsigned>(littleEndian(head.subspan(at, 2)));
    }

    /// The image type without the mark of run-length codes.
    unsigned kind() const { return imageType & ~runLengthMark; }
    bool isRunLength() const { return (imageType & runLengthMark) != 0; }
    unsigned attributeBits() const { return descriptor & 15; }
    std::size_t colorMapLength() const { return mapType == 1 ? colors * ((colorBits + 7) / 8) : 0; }

    static constexpr unsigned runLengthMark = 8;
};

enum Kind : unsigned { indexed = 1, colored = 2, grayscale = 3 };

struct PixelKind {
    unsigned kind, bits;
    Pixels pixels;
    unsigned alphaBits; ///< of the stored pixel
};

constexpr std::array<PixelKind, 9> pixelKinds = {{
    {indexed, 8, Pixels::index8, 0},
    {indexed, 16, Pixels::index16, 0},
    {colored, 15, Pixels::color16, 0},
    {colored, 16, Pixels::color16, 1},
    {colored, 24, Pixels::color24, 0},
    {colored, 32, Pixels::color32, 8},
    {grayscale, 1, Pixels::bits, 0},
    {grayscale, 8, Pixels::gray, 0},
    {grayscale, 16, Pixels::grayAlpha, 8},
}};

/// Null if it is unknown.
const PixelKind* pixelKindOf(unsigned kind, unsigned bits) {
    const auto found = std::ranges::find_if(
        pixelKinds, [&](const PixelKind& known) { return known.kind == kind && known.bits == bits; });
    return found == pixelKinds.end() ? nullptr : &*found;
}

/// Colours may have a colour map too, which is not used.
bool hasSoundColorMap(const Fields& fields) {
    if (fields.mapType == 1)
        return pixelKindOf(colored, fields.colorBits) != nullptr && fields.colors >= 1
               && fields.firstColor + fields.colors <= 65536;
    return fields.mapType == 0 && fields.kind() != indexed && fields.firstColor == 0 && fields.colors == 0
           && (fields.colorBits == 0 || pixelKindOf(colored, fields.colorBits) != nullptr);
}

/// What the extension area of a newer file says about alpha; nullopt if there is none, or if it contradicts
/// the attribute bits.
std::optional<Alpha> alphaInExtensionArea(const ByteReader& reader, unsigned attributeBits) {
    constexpr std::string_view signature{"TRUEVISION-XFILE.\0", 18};
    constexpr std::size_t footerLength = 26, attributesType = 494;
    std::array<std::uint8_t, footerLength> footer{};
    if (reader.size() < headerLength + footerLength
        || reader.readAt(reader.size() - footerLength, footer) != footerLength
        || !std::equal(signature.begin(), signature.end(), footer.begin() + 8))
        return std::nullopt;
    const std::uint64_t area = littleEndian(ByteView(footer).first(4));
    std::array<std::uint8_t, attributesType + 1> fields{};
    if (area < headerLength || reader.readAt(area, fields) != fields.size()
        || littleEndian(ByteView(fields).first(2)) < fields.size())
        return std::nullopt;
    enum Type : unsigned { absent = 0, undefined = 1, undefinedButKept = 2, useful = 3, multiplied = 4 };
    switch (fields[attributesType]) {
    case absent:
        return attributeBits == 0 ? std::optional(Alpha::none) : std::nullopt;
    case undefined:
    case undefinedButKept:
        return Alpha::none;
    case useful:
        return Alpha::straight;
    case multiplied:
        return Alpha::premultiplied;
    default:
        return std::nullopt;
    }
}

Alpha alphaOf(const Fields& fields, const PixelKind& color, const ByteReader& reader) {
    if (color.alphaBits == 0)
        return Alpha::none;
    if (const std::optional<Alpha> stated = alphaInExtensionArea(reader, fields.attributeBits()))
        return *stated;
    // Many writers of 8 bits of alpha leave the number of attribute bits at 0.
    return color.alphaBits == 8 || fields.attributeBits() != 0 ? Alpha::straight : Alpha::none;
}

Result<ColorMap> readColorMap(const Fields& fields, const PixelKind& color, bool withAlpha,
                              const ByteReader& reader) {
    Bytes stored(fields.colorMapLength());
    if (reader.readAt(headerLength + fields.idLength, stored) != stored.size())
        return Failure{Reason::truncated, "the TGA file ends in its colour map"};
    ColorMap map{fields.firstColor, Bytes(std::size_t{fields.colors} * (withAlpha ? 4 : 3))};
    convertPixels(color.pixels, withAlpha, stored, fields.colors, map.entries.data());
    return map;
}

} // namespace

bool isTGA(ByteView head) {
    if (head.size() < headerLength)
        return false;
    const Fields fields(head);
    constexpr unsigned interleavingMarks = 0xC0;
    const PixelKind* const stored = pixelKindOf(fields.kind(), fields.bits);
    const bool hasCodesOfBits = fields.isRunLength() && fields.bits == 1;
    return stored != nullptr && !hasCodesOfBits && hasSoundColorMap(fields) && fields.width > 0
           && fields.height > 0 && (fields.descriptor & interleavingMarks) == 0
           && (fields.attributeBits() <= 1 || fields.attributeBits() == 8);
}

Result<Header> readHeader(const ByteReader& reader) {
    std::array<std::uint8_t, headerLength> head{};
    if (reader.readAt(0, head) != head.size() || !isTGA(head)) // it may have changed since it was recognised
        return Failure{Reason::malformed, "the TGA file has no sound header"};
    const Fields fields(head);
    const PixelKind& stored = *pixelKindOf(fields.kind(), fields.bits);
    const PixelKind& color = fields.kind() == indexed ? *pixelKindOf(colored, fields.colorBits) : stored;
    Header header;
    header.pixels = stored.pixels;
    header.alpha = alphaOf(fields, color, reader);
    header.format = {fields.width, fields.height,
                     fields.kind() == grayscale ? ColorModel::gray : ColorModel::rgb,
                     header.alpha != Alpha::none};
    header.isRunLength = fields.isRunLength();
    header.isRightToLeft = (fields.descriptor & 0x10) != 0;
    header.isTopDown = (fields.descriptor & 0x20) != 0;
    if (fields.kind() == indexed)
        header.colors = TRY(readColorMap(fields, color, header.format.hasAlpha, reader));
    header.pixelOffset = headerLength + fields.idLength + fields.colorMapLength();
    return header;
}

} // namespace kestrine::tga
