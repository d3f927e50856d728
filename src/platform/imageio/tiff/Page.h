// Page: the tags of one page, checked: how its pixels are stored and in which form they are delivered.
#pragma once

#include "platform/imageio/ImageCodec.h"
#include "platform/imageio/tiff/Library.h"

namespace kestrine::tiff {

/// What the stored samples mean.
enum class Color : std::uint8_t {
    whiteIsZero, ///< grey, 0 is white
    gray,
    rgb,
    palette,  ///< indices into the page's colours
    cmyk,     ///< 0 means no ink
    cieLab,   ///< a and b are signed
    iccLab,   ///< a and b are shifted by half their range
    rendered, ///< rare: libtiff converts it to 8-bit RGB
};

/// What kind of numbers the samples are.
enum class Numbers : std::uint8_t { unsignedIntegers, signedIntegers, reals };

struct Page {
    std::uint64_t directory = 0; ///< where it begins in the file
    RowFormat format;            ///< as delivered
    Resolution resolution;
    int orientation = 1; ///< 1 to 8
    Bytes icc;           ///< as stored

    Color color = Color::rendered;
    Numbers numbers = Numbers::unsignedIntegers;
    unsigned bits = 8;    ///< of a stored sample: 1 to 16, 32 or 64
    unsigned samples = 3; ///< stored per pixel, ignored ones included
    int alpha = -1;       ///< which of them is alpha
    bool isPremultiplied = false;
    bool isPlanar = false; ///< each sample has its own strips or tiles
    bool isCompressed = false;
    bool isYCbCrJPEG = false;    ///< libtiff's JPEG decoder converts it to RGB
    std::uint32_t tileWidth = 0; ///< 0 when it is stored in strips
    std::uint32_t blockRows = 0; ///< rows of a strip or tile
    std::uint64_t heldBytes = 0; ///< of memory for blocks, if they are large
    Bytes colors;                ///< of a palette: red, green, blue per index

    /// Samples per colour as stored; a minimum when the page is rendered.
    unsigned colorSamples() const;
    unsigned planes() const { return isPlanar ? samples : 1; }
    /// Whether the stored bytes are the delivered ones.
    bool isDeliveredAsStored() const;
    /// Whether the pixels only need to be read.
    bool isUncompressed() const { return !isCompressed && isDeliveredAsStored(); }

    bool operator==(const Page&) const = default;
};

/// Reads and checks the tags of the current page of `file` and prepares the file to deliver samples or
/// rendered rows. Every size is checked. Fails as "unsupported" for pages that cannot be decoded.
Result<Page> readPage(const File& file, std::uint64_t directory);

/// Opens the file again at `page`. Fails with reason "malformed" when the page has changed.
Result<std::unique_ptr<File>> reopenPage(const Input& input, const Page& page);

} // namespace kestrine::tiff
