#include "platform/imageio/icns/StoredPixels.h"

#include "platform/host/BigEndian.h"

#include <algorithm>
#include <array>

namespace kestrine::icns {

namespace {

Failure endedEarly() { return {Reason::truncated, "the icon ends before its last pixel"}; }

using Color = std::array<std::uint8_t, 3>;

constexpr std::array<Color, 16> sixteenColors = {{{0xFF, 0xFF, 0xFF},
                                                  {0xFC, 0xF3, 0x05},
                                                  {0xFF, 0x64, 0x02},
                                                  {0xDD, 0x08, 0x06},
                                                  {0xF2, 0x08, 0x84},
                                                  {0x46, 0x00, 0xA5},
                                                  {0x00, 0x00, 0xD4},
                                                  {0x02, 0xAB, 0xEA},
                                                  {0x1F, 0xB7, 0x14},
                                                  {0x00, 0x64, 0x11},
                                                  {0x56, 0x2C, 0x05},
                                                  {0x90, 0x71, 0x3A},
                                                  {0xC0, 0xC0, 0xC0},
                                                  {0x80, 0x80, 0x80},
                                                  {0x40, 0x40, 0x40},
                                                  {0x00, 0x00, 0x00}}};

/// The first 215 colours are a cube of six levels, from white on, without black. Ten levels of red, green,
/// blue and grey that the cube does not have follow, then black.
constexpr Color systemColor(std::size_t index) {
    constexpr std::size_t cube = 215, levels = 10, black = 255;
    constexpr std::array<std::uint8_t, levels> ramp = {0xEE, 0xDD, 0xBB, 0xAA, 0x88,
                                                       0x77, 0x55, 0x44, 0x22, 0x11};
    const auto level = [](std::size_t step) { return static_cast<std::uint8_t>(255 - 51 * step); };
    if (index < cube)
        return {level(index / 36), level(index / 6 % 6), level(index % 6)};
    if (index == black)
        return {0, 0, 0};
    const std::size_t row = (index - cube) / levels;
    const std::uint8_t value = ramp[(index - cube) % levels];
    const auto valueIf = [&](std::size_t channel) {
        return row == channel || row == 3 ? value : std::uint8_t{0};
    };
    return {valueIf(0), valueIf(1), valueIf(2)};
}

/// Decodes `count` samples: codes up to 127 are followed by one more sample than that, others stand for
/// repetitions of the one sample that follows. Removes what was used from `codes`.
bool decodePlane(ByteView& codes, std::size_t count, std::size_t channel, PixelBuffer& pixels) {
    constexpr unsigned runMark = 128, shortestRun = 3;
    for (std::size_t done = 0; done < count;) {
        if (codes.size() < 2)
            return false;
        const unsigned code = codes[0];
        const bool isRun = code >= runMark;
        const std::size_t length =
            std::min<std::size_t>(isRun ? code - runMark + shortestRun : code + 1, count - done);
        if (codes.size() < 1 + (isRun ? 1 : length))
            return false;
        for (std::size_t i = 0; i < length; ++i)
            pixels.bytes[4 * (done + i) + channel] = codes[isRun ? 1 : 1 + i];
        codes = codes.subspan(isRun ? 2 : 1 + length);
        done += length;
    }
    return true;
}

class Drawing {
public:
    explicit Drawing(const ElementType& type)
        : pixels_(RowFormat{type.width, type.height, ColorModel::rgb, true}),
          count_(std::size_t{type.width} * type.height) {
        std::ranges::fill(pixels_.bytes, std::uint8_t{255});
    }

    bool drawBits(ByteView content) {
        if (content.size() < count_ / 8)
            return false;
        for (std::size_t i = 0; i < count_; ++i)
            setColor(i, bitAt(content, i) ? Color{0, 0, 0} : Color{255, 255, 255});
        return true;
    }

    bool drawIndices4(ByteView content) {
        if (content.size() < count_ / 2)
            return false;
        for (std::size_t i = 0; i < count_; ++i)
            setColor(i, sixteenColors[content[i / 2] >> (i % 2 == 0 ? 4 : 0) & 15]);
        return true;
    }

    bool drawIndices8(ByteView content) {
        if (content.size() < count_)
            return false;
        for (std::size_t i = 0; i < count_; ++i)
            setColor(i, systemColor(content[i]));
        return true;
    }

    /// Plain pixels have exactly the length that they need.
    bool drawColors(ByteView content) {
        if (content.size() == 3 * count_) {
            for (std::size_t i = 0; i < count_; ++i)
                setColor(i, {content[3 * i], content[3 * i + 1], content[3 * i + 2]});
            return true;
        }
        return drawPlanes(content, {0, 1, 2});
    }

    /// Alpha is the first plane.
    bool drawARGB(ByteView content) { return drawPlanes(content, {3, 0, 1, 2}); }

    bool setAlpha(ByteView mask) {
        if (mask.size() < count_)
            return false;
        for (std::size_t i = 0; i < count_; ++i)
            pixels_.bytes[4 * i + 3] = mask[i];
        return true;
    }

    /// The mask follows bits of the same size.
    bool setAlphaFromBits(ByteView bitsAndMask) {
        if (bitsAndMask.size() < count_ / 8 * 2)
            return false;
        for (std::size_t i = 0; i < count_; ++i)
            pixels_.bytes[4 * i + 3] = bitAt(bitsAndMask.subspan(count_ / 8), i) ? 255 : 0;
        return true;
    }

    PixelBuffer pixels() && { return std::move(pixels_); }

private:
    static bool bitAt(ByteView bits, std::size_t i) { return (bits[i / 8] << i % 8 & 0x80) != 0; }

    bool drawPlanes(ByteView codes, std::initializer_list<std::size_t> channels) {
        return std::ranges::all_of(
            channels, [&](std::size_t channel) { return decodePlane(codes, count_, channel, pixels_); });
    }

    void setColor(std::size_t i, const Color& color) {
        std::ranges::copy(color, pixels_.bytes.begin() + static_cast<std::ptrdiff_t>(4 * i));
    }

    PixelBuffer pixels_;
    const std::size_t count_; ///< of pixels
};

Result<Bytes> contentOf(const ByteReader& reader, const Element& element) {
    // Codes need at most twice the bytes of the samples; files may say any length.
    const std::uint64_t longest = std::uint64_t{16} * element.type->width * element.type->height;
    Bytes content(static_cast<std::size_t>(std::min(element.length, longest)));
    if (reader.readAt(element.offset, content) != content.size())
        return endedEarly();
    return content;
}

bool draw(const ElementType& type, ByteView content, Drawing& drawing) {
    constexpr std::size_t unused = 4;
    switch (type.kind) {
    case Kind::bits:
    case Kind::bitsWithMask:
        return drawing.drawBits(content);
    case Kind::indices4:
        return drawing.drawIndices4(content);
    case Kind::indices8:
        return drawing.drawIndices8(content);
    case Kind::colors:
        return drawing.drawColors(content);
    case Kind::colorsAfter4:
        return content.size() > unused && drawing.drawColors(content.subspan(unused));
    case Kind::file:
        if (content.size() > 4 && bigEndian(content.first(4)) == fourCC("ARGB"))
            return drawing.drawARGB(content.subspan(4));
        return drawing.drawColors(content);
    case Kind::mask:
        break;
    }
    return false;
}

/// The first element with this size and kind; null if there is none.
const Element* find(const std::vector<Element>& elements, const ElementType& size, Kind kind) {
    const auto found = std::ranges::find_if(elements, [&](const Element& element) {
        return element.type->kind == kind && element.type->width == size.width
               && element.type->height == size.height;
    });
    return found == elements.end() ? nullptr : &*found;
}

} // namespace

Result<PixelBuffer> decodeStored(const ByteReader& reader, const Element& element,
                                 const std::vector<Element>& elements) {
    Drawing drawing(*element.type);
    const Bytes content = TRY(contentOf(reader, element));
    if (!draw(*element.type, content, drawing))
        return endedEarly();
    const Element* const mask = find(elements, *element.type, Kind::mask);
    const Element* const bits = find(elements, *element.type, Kind::bitsWithMask);
    if (element.type->kind == Kind::file || (mask == nullptr && bits == nullptr))
        return std::move(drawing).pixels();
    const Bytes alpha = TRY(contentOf(reader, mask != nullptr ? *mask : *bits));
    if (mask != nullptr ? !drawing.setAlpha(alpha) : !drawing.setAlphaFromBits(alpha))
        return endedEarly();
    return std::move(drawing).pixels();
}

} // namespace kestrine::icns
