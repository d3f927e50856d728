// Writes GIF files with one picture, one colour table and at most one transparent entry. It uses no library:
// the container has a few dozen bytes, and our own compression is faster.

#include "platform/imageio/Codecs.h"
#include "platform/imageio/gif/Compression.h"
#include "platform/imageio/gif/Dither.h"

#include <algorithm>
#include <bit>

namespace kestrine::gif {

namespace {

struct LoadedPicture {
    CoveredPicture picture;
    Histogram shownColors;
    bool hasTransparency = false;
};

/// Copies colours and alpha from a row with `channels` 8-bit samples per pixel. Grey becomes RGB.
void unpackRow(ByteView samples, std::size_t channels, Pixel* row, std::span<std::uint8_t> alpha) {
    const std::uint8_t* sample = samples.data();
    const bool isGray = channels < 3, hasAlpha = channels % 2 == 0;
    for (std::size_t x = 0; x < alpha.size(); ++x, sample += channels) {
        row[x].color =
            isGray ? Color{sample[0], sample[0], sample[0]} : Color{sample[0], sample[1], sample[2]};
        row[x].cover = Cover::opaque;
        alpha[x] = hasAlpha ? sample[channels - 1] : 255;
    }
}

void cutTransparency(ByteView alpha, Pixel* row) {
    for (std::size_t x = 0; x < alpha.size(); ++x)
        row[x].cover = alpha[x] < 128 ? Cover::absent : Cover::opaque;
}

void countColors(const Pixel* row, LoadedPicture& loaded) {
    for (std::uint32_t x = 0; x < loaded.picture.width; ++x)
        if (row[x].cover == Cover::opaque)
            loaded.shownColors.add(row[x].color);
        else
            loaded.hasTransparency = true;
}

/// Reads all rows, decides which pixels are shown and counts their colours.
Result<LoadedPicture> load(RowSource& rows, bool dithersTransparency) {
    const RowFormat& format = rows.format();
    LoadedPicture loaded{{format.width, format.height, std::vector<Pixel>(format.pixels())}, {}};
    Bytes samples(format.bytesPerRow()), alpha(format.width);
    TransparencyDither transparency(format.width);
    for (std::uint32_t y = 0; y < format.height; ++y) {
        TRY(rows.readRow(samples));
        Pixel* row = loaded.picture.row(y);
        unpackRow(samples, format.channels(), row, alpha);
        if (format.hasAlpha && dithersTransparency)
            transparency.decide(alpha, row);
        else if (format.hasAlpha)
            cutTransparency(alpha, row);
        countColors(row, loaded);
    }
    return loaded;
}

Palette paletteFor(const LoadedPicture& loaded, ByteView table) {
    return isColorTable(table) ? paletteOfTable(table, loaded.shownColors, loaded.hasTransparency)
                               : paletteOfPicture(loaded.shownColors, loaded.hasTransparency);
}

/// The number of bits of an index of the palette: 1 to 8.
unsigned indexBitsOf(const Palette& palette) {
    return std::max(1u, static_cast<unsigned>(std::bit_width(palette.colors.size() - 1)));
}

void append(Bytes& file, std::initializer_list<unsigned> bytes) {
    for (const unsigned byte : bytes)
        file.push_back(static_cast<std::uint8_t>(byte));
}

void appendScreen(Bytes& file, const CoveredPicture& picture, const Palette& palette) {
    const unsigned bits = indexBitsOf(palette);
    // A global table of 2^bits colours with 8 bits per channel; background 0; no pixel aspect ratio.
    append(file, {'G', 'I', 'F', '8', '9', 'a', picture.width & 255, picture.width >> 8, picture.height & 255,
                  picture.height >> 8, 0x80 | 7 << 4 | (bits - 1), 0, 0});
    for (const Color& color : palette.colors)
        append(file, {color.red, color.green, color.blue});
    file.resize(file.size() + 3 * ((std::size_t{1} << bits) - palette.colors.size()));
}

/// A graphic control extension: no animation, one transparent index.
void appendTransparency(Bytes& file, std::uint8_t index) { append(file, {0x21, 0xF9, 4, 1, 0, 0, index, 0}); }

/// The image descriptor: the whole screen, no local colour table, not interlaced.
void appendDescriptor(Bytes& file, const CoveredPicture& picture) {
    append(file, {0x2C, 0, 0, 0, 0, picture.width & 255, picture.width >> 8, picture.height & 255,
                  picture.height >> 8, 0});
}

void placeExactly(const LoadedPicture& loaded, const Pixel* row,
                  const std::vector<std::uint8_t>& indexOfEntry, std::optional<std::uint8_t> transparent,
                  std::span<std::uint8_t> indices) {
    for (std::size_t x = 0; x < indices.size(); ++x)
        indices[x] = row[x].cover == Cover::opaque ? indexOfEntry[loaded.shownColors.positionOf(row[x].color)]
                                                   : *transparent;
}

void appendPixels(Bytes& file, const LoadedPicture& loaded, const Palette& palette) {
    const std::vector<std::uint8_t> exact = exactIndices(palette, loaded.shownColors);
    ColorDither dither(palette, loaded.picture.width);
    Compression compression(std::max(2u, indexBitsOf(palette)), file);
    Bytes indices(loaded.picture.width);
    for (std::uint32_t y = 0; y < loaded.picture.height; ++y) {
        const Pixel* row = loaded.picture.row(y);
        if (exact.empty())
            dither.place(row, indices);
        else
            placeExactly(loaded, row, exact, palette.transparent, indices);
        compression.add(indices);
    }
    compression.finish();
}

} // namespace

Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file) {
    const RowFormat& format = rows.format();
    if (format.depth != SampleDepth::bits8)
        return Failure{Reason::unsupported, "a GIF cannot hold 16-bit samples"};
    LoadedPicture loaded = TRY(load(rows, options.ditherTransparency));

    const Palette palette = paletteFor(loaded, options.colorTable);
    Bytes bytes;
    appendScreen(bytes, loaded.picture, palette);
    if (palette.transparent)
        appendTransparency(bytes, *palette.transparent);
    appendDescriptor(bytes, loaded.picture);
    appendPixels(bytes, loaded, palette);
    append(bytes, {0x3B});
    return file.write(bytes);
}

} // namespace kestrine::gif
