#include "platform/imageio/pcx/Header.h"

#include "platform/host/LittleEndian.h"
#include "platform/imageio/pcx/StoredRows.h"

#include <algorithm>
#include <array>
#include <optional>

namespace kestrine::pcx {

namespace {

constexpr std::size_t paletteOffset = 16, shortPaletteLength = std::size_t{3} * 16;
constexpr std::size_t longPaletteLength = std::size_t{3} * 256;
constexpr std::uint8_t longPaletteMark = 12;

std::uint32_t u16(ByteView bytes, std::size_t at) {
    return static_cast<std::uint32_t>(littleEndian(bytes.subspan(at, 2)));
}

struct PixelKind {
    unsigned bits, planes;
    Pixels pixels;
};

constexpr std::array<PixelKind, 8> pixelKinds = {{
    {1, 1, Pixels::bits},
    {1, 2, Pixels::indexed},
    {1, 3, Pixels::indexed},
    {1, 4, Pixels::indexed},
    {2, 1, Pixels::indexed},
    {4, 1, Pixels::indexed},
    {8, 3, Pixels::colors},
    {8, 4, Pixels::colors},
}};

/// The 256 colours at the offset, if the mark is there and the file has all of them.
std::optional<Bytes> longPaletteAt(const ByteReader& reader, std::uint64_t offset) {
    Bytes marked(1 + longPaletteLength);
    if (reader.readAt(offset, marked) != marked.size() || marked[0] != longPaletteMark)
        return std::nullopt;
    return Bytes(marked.begin() + 1, marked.end());
}

/// The colours of 8-bit indices are at the end of the file, or at least after the last row.
std::optional<Bytes> longPalette(const std::shared_ptr<const ByteReader>& reader, const Header& header) {
    const std::uint64_t size = reader->size();
    if (size > headerLength + longPaletteLength)
        if (std::optional<Bytes> palette = longPaletteAt(*reader, size - 1 - longPaletteLength))
            return palette;
    StoredRows rows(reader, header.isRunLength);
    Bytes row(header.bytesPerStoredRow());
    for (std::uint32_t y = 0; y < header.format.height; ++y)
        if (!rows.read(row))
            return std::nullopt;
    return longPaletteAt(*reader, rows.offset());
}

/// A file without its 256 colours is grey if it says so, else it is cut off.
Result<void> readLongPalette(const std::shared_ptr<const ByteReader>& reader, bool mayBeGray,
                             Header& header) {
    std::optional<Bytes> palette = longPalette(reader, header);
    if (!palette && !mayBeGray)
        return Failure{Reason::truncated, "the PCX file ends before its colours"};
    header.pixels = palette ? Pixels::indexed : Pixels::gray;
    header.palette = std::move(palette).value_or(Bytes{});
    return {};
}

} // namespace

bool isPCX(ByteView head) {
    constexpr unsigned signature = 10, unknownVersion = 1, newestVersion = 5;
    if (head.size() < 12 || head[0] != signature || head[1] == unknownVersion || head[1] > newestVersion
        || head[2] > 1)
        return false;
    const unsigned bits = head[3];
    return (bits == 1 || bits == 2 || bits == 4 || bits == 8) && u16(head, 8) >= u16(head, 4)
           && u16(head, 10) >= u16(head, 6);
}

Result<Header> readHeader(const std::shared_ptr<const ByteReader>& reader) {
    std::array<std::uint8_t, headerLength> stored{};
    if (reader->readAt(0, stored) != stored.size())
        return Failure{Reason::truncated, "the PCX file ends in its header"};
    constexpr std::size_t planes = 65, planeBytes = 66, paletteKind = 68;
    const std::uint32_t width = u16(stored, 8) - u16(stored, 4) + 1,
                        height = u16(stored, 10) - u16(stored, 6) + 1;
    Header header{.format = {width, height},
                  .bits = stored[3],
                  .planes = stored[planes],
                  .planeBytes = u16(stored, planeBytes),
                  .isRunLength = stored[2] == 1};
    if (header.planeBytes < (std::size_t{width} * header.bits + 7) / 8)
        return Failure{Reason::malformed, "the PCX has rows that are too short for its pixels"};
    if (!header.format.isWithinLimits())
        return Failure{Reason::tooLarge, "the PCX picture has too many pixels"};
    constexpr unsigned gray = 2;
    if (header.bits == 8 && header.planes == 1) {
        TRY(readLongPalette(reader, u16(stored, paletteKind) == gray, header));
    } else {
        const auto known = std::ranges::find_if(pixelKinds, [&](const PixelKind& kind) {
            return kind.bits == header.bits && kind.planes == header.planes;
        });
        if (known == pixelKinds.end())
            return Failure{Reason::unsupported, "the PCX has an unknown pixel format"};
        header.pixels = known->pixels;
        header.format.hasAlpha = header.pixels == Pixels::colors && header.planes == 4;
        header.palette.assign(stored.begin() + paletteOffset,
                              stored.begin() + paletteOffset + shortPaletteLength);
    }
    if (header.pixels == Pixels::bits || header.pixels == Pixels::gray)
        header.format.model = ColorModel::gray;
    return header;
}

} // namespace kestrine::pcx
