#include "platform/imageio/tiff/Page.h"

#include <algorithm>
#include <array>

namespace kestrine::tiff {

namespace {

/// Largest accepted strip, tile, row or row of tiles, in bytes.
constexpr std::uint64_t maximumBlockBytes = std::uint64_t{1} << 30;

/// Smaller blocks do not count as memory that is held.
constexpr std::uint64_t uncountedBlockBytes = std::uint64_t{1} << 24;

/// Files with hundreds of samples per pixel are measurements, not pictures, and all of them would be decoded.
constexpr unsigned maximumSamples = 64;

/// How many bytes one byte of the file can decode to. The other methods have no useful bound.
struct Expansion {
    std::uint16_t compression;
    std::uint64_t bound;
};
constexpr std::array<Expansion, 5> expansions = {{
    {COMPRESSION_NONE, 1},
    {COMPRESSION_PACKBITS, 64},
    {COMPRESSION_LZW, 2560}, // the longest string, 3838 bytes, for 12 bits
    {COMPRESSION_ADOBE_DEFLATE, 1032},
    {COMPRESSION_DEFLATE, 1032},
}};

struct ColorMeaning {
    std::uint16_t photometric;
    Color color;
};
constexpr std::array<ColorMeaning, 7> colorMeanings = {{
    {PHOTOMETRIC_MINISWHITE, Color::whiteIsZero},
    {PHOTOMETRIC_MINISBLACK, Color::gray},
    {PHOTOMETRIC_RGB, Color::rgb},
    {PHOTOMETRIC_PALETTE, Color::palette},
    {PHOTOMETRIC_SEPARATED, Color::cmyk},
    {PHOTOMETRIC_CIELAB, Color::cieLab},
    {PHOTOMETRIC_ICCLAB, Color::iccLab},
}};

Failure unsupported(const char* what) {
    return {Reason::unsupported, std::string("TIFF pictures with ") + what + " are not supported"};
}

/// Grey or RGB by the number of samples, where a file does not state what they mean.
std::uint16_t likelyPhotometric(unsigned samples) {
    return samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
}

Color storedColor(const File& file, const Page& page) {
    if (page.isYCbCrJPEG)
        return Color::rgb;
    const std::uint16_t photometric = file.shortNumber(TIFFTAG_PHOTOMETRIC, likelyPhotometric(page.samples));
    const auto meaning = std::ranges::find(colorMeanings, photometric, &ColorMeaning::photometric);
    return meaning == colorMeanings.end() ? Color::rendered : meaning->color;
}

/// nullopt for complex numbers.
std::optional<Numbers> storedNumbers(const File& file) {
    switch (file.shortNumber(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT)) {
    case SAMPLEFORMAT_UINT:
    case SAMPLEFORMAT_VOID:
        return Numbers::unsignedIntegers;
    case SAMPLEFORMAT_INT:
        return Numbers::signedIntegers;
    case SAMPLEFORMAT_IEEEFP:
        return Numbers::reals;
    default:
        return std::nullopt;
    }
}

bool hasUsualBits(const Page& page) {
    const unsigned bits = page.bits;
    switch (page.numbers) {
    case Numbers::unsignedIntegers:
        return bits <= 16 || bits == 32;
    case Numbers::signedIntegers:
        return bits == 8 || bits == 16 || bits == 32;
    case Numbers::reals:
        return bits == 16 || bits == 32 || bits == 64;
    }
    return false;
}

/// Whether SampleRows can convert samples of this form.
bool hasUsualSamples(const File& file, const Page& page) {
    const bool isUnsigned = page.numbers == Numbers::unsignedIntegers;
    const bool isFullSize = page.bits == 8 || page.bits == 16;
    if (!storedNumbers(file))
        return false;
    switch (page.color) {
    case Color::whiteIsZero:
    case Color::gray:
    case Color::rgb:
        return hasUsualBits(page);
    case Color::palette:
        return isUnsigned && page.bits <= 8;
    case Color::cmyk:
        return isUnsigned && isFullSize && file.shortNumber(TIFFTAG_INKSET, INKSET_CMYK) == INKSET_CMYK;
    case Color::cieLab:
        return page.numbers != Numbers::reals && isFullSize;
    case Color::iccLab:
        return isUnsigned && isFullSize;
    case Color::rendered:
        break;
    }
    return false;
}

/// The first extra sample that is alpha.
void findAlpha(const File& file, Page& page) {
    std::uint16_t count = 0;
    const std::uint16_t* kinds = nullptr;
    if (!file.library().getField(file.handle(), TIFFTAG_EXTRASAMPLES, &count, &kinds))
        return;
    for (std::uint16_t i = 0; i < count && page.colorSamples() + i < page.samples; ++i)
        if (kinds[i] == EXTRASAMPLE_ASSOCALPHA || kinds[i] == EXTRASAMPLE_UNASSALPHA) {
            page.alpha = static_cast<int>(page.colorSamples() + i);
            page.isPremultiplied = kinds[i] == EXTRASAMPLE_ASSOCALPHA;
            return;
        }
}

/// The colours of a palette. Old files store 8-bit values instead of 16-bit ones.
Bytes storedColors(const File& file, unsigned bits) {
    std::array<const std::uint16_t*, 3> maps{};
    if (!file.library().getField(file.handle(), TIFFTAG_COLORMAP, &maps[0], &maps[1], &maps[2]))
        return {};
    const std::size_t count = std::size_t{1} << bits;
    const bool is8Bit = std::ranges::all_of(maps, [&](const std::uint16_t* map) {
        return std::all_of(map, map + count, [](std::uint16_t value) { return value < 256; });
    });
    Bytes colors;
    for (std::size_t i = 0; i < count; ++i)
        for (const std::uint16_t* map : maps)
            colors.push_back(static_cast<std::uint8_t>(is8Bit ? map[i] : map[i] >> 8));
    return colors;
}

Bytes storedICC(const File& file) {
    std::uint32_t size = 0;
    const std::uint8_t* icc = nullptr;
    if (!file.library().getField(file.handle(), TIFFTAG_ICCPROFILE, &size, &icc))
        return {};
    return Bytes(icc, icc + size);
}

Resolution storedResolution(const File& file) {
    const float horizontal = file.realNumber(TIFFTAG_XRESOLUTION, 0),
                vertical = file.realNumber(TIFFTAG_YRESOLUTION, 0);
    switch (file.shortNumber(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH)) {
    case RESUNIT_INCH:
        return plausibleResolution(horizontal, vertical);
    case RESUNIT_CENTIMETER:
        return plausibleResolution(horizontal * centimetresPerInch, vertical * centimetresPerInch);
    default:
        return {};
    }
}

/// Bytes that must be held at once to decode a strip or a row of tiles.
std::uint64_t blockBytes(const File& file, const Page& page) {
    const Functions& library = file.library();
    const std::uint64_t across =
        page.tileWidth ? (page.format.width + page.tileWidth - 1) / page.tileWidth : 1;
    if (page.color == Color::rendered)
        return std::uint64_t{4} * page.format.width * page.blockRows;
    return page.tileWidth ? across * library.tileSize(file.handle()) : library.scanlineSize(file.handle());
}

/// Whether the file is long enough for one row of a strip, or one tile.
bool canHoldBlock(const File& file, const Page& page) {
    const std::uint16_t compression = file.shortNumber(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    const auto expansion = std::ranges::find(expansions, compression, &Expansion::compression);
    const std::uint64_t unit =
        page.tileWidth ? file.library().tileSize(file.handle()) : file.library().scanlineSize(file.handle());
    return expansion == expansions.end() || unit / expansion->bound <= file.size();
}

/// Tiles can be larger than the picture, but a large tile must contain something of it.
bool isMostlyPadding(const File& file, const Page& page) {
    constexpr std::uint64_t uncheckedBytes = std::uint64_t{1} << 26, maxTimes = 4;
    if (page.tileWidth == 0)
        return false;
    const std::uint64_t tilePixels = std::uint64_t{page.tileWidth} * page.blockRows;
    return file.library().tileSize(file.handle()) > uncheckedBytes
           && tilePixels / maxTimes > page.format.pixels();
}

Result<void> checkBlocks(const File& file, Page& page) {
    const std::uint64_t bytes = blockBytes(file, page);
    if (bytes == 0 || page.blockRows == 0)
        return Failure{Reason::malformed, "the TIFF picture has strips or tiles of size zero"};
    if (bytes > maximumBlockBytes)
        return Failure{Reason::tooLarge, "the TIFF picture has too large strips or tiles"};
    if (isMostlyPadding(file, page))
        return Failure{Reason::implausible, "the TIFF picture has tiles that are much larger than itself"};
    if (!canHoldBlock(file, page))
        return Failure{Reason::truncated, "the TIFF file is too short for its pixels"};
    const bool isHeld = page.tileWidth != 0 || page.color == Color::rendered;
    if (isHeld && bytes > uncountedBlockBytes)
        page.heldBytes = 2 * bytes * page.planes(); // libtiff or a row of tiles needs as much again
    return {};
}

void readBlocks(const File& file, Page& page) {
    if (file.library().isTiled(file.handle())) {
        page.tileWidth = file.longNumber(TIFFTAG_TILEWIDTH, 0);
        page.blockRows = file.longNumber(TIFFTAG_TILELENGTH, 0);
    } else {
        page.blockRows =
            std::min(file.longNumber(TIFFTAG_ROWSPERSTRIP, page.format.height), page.format.height);
    }
}

/// The rows of neighbouring tiles are joined, so the row of a tile must be whole bytes.
bool hasWholeBytesInTiles(const Page& page) {
    const std::uint64_t bits = std::uint64_t{page.tileWidth} * page.bits * (page.isPlanar ? 1 : page.samples);
    return bits % 8 == 0;
}

/// LogL and LogLuv, whose codes libtiff expands.
bool hasLogarithms(const File& file) {
    const std::uint16_t photometric = file.shortNumber(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    return photometric == PHOTOMETRIC_LOGL || photometric == PHOTOMETRIC_LOGLUV;
}

Result<void> readSamples(const File& file, Page& page) {
    if (page.samples > maximumSamples)
        return unsupported("so many samples per pixel");
    page.numbers = storedNumbers(file).value_or(Numbers::unsignedIntegers);
    page.color = storedColor(file, page);
    if (!hasUsualSamples(file, page) || !hasWholeBytesInTiles(page)) {
        char why[1024];
        const bool isSigned = page.numbers == Numbers::signedIntegers && !hasLogarithms(file);
        if (!storedNumbers(file) || isSigned || !file.library().canRender(file.handle(), why))
            return unsupported("this kind of samples");
        page.color = Color::rendered;
    }
    findAlpha(file, page);
    if (page.samples < page.colorSamples())
        return Failure{Reason::malformed, "the TIFF picture has too few samples per pixel for its colours"};
    if (page.color == Color::palette)
        page.colors = storedColors(file, page.bits);
    if (page.color == Color::palette && page.colors.empty())
        return Failure{Reason::malformed, "the TIFF picture has no colours for its indices"};
    return {};
}

int storedOrientation(const File& file) {
    const std::uint16_t stored = file.shortNumber(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    return stored >= ORIENTATION_TOPLEFT && stored <= ORIENTATION_LEFTBOT ? stored : ORIENTATION_TOPLEFT;
}

void prepare(const File& file, const Page& page) {
    if (page.isYCbCrJPEG)
        file.library().setField(file.handle(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    // libtiff would otherwise mirror what it renders; orientation is applied elsewhere.
    if (page.color == Color::rendered)
        file.library().setField(file.handle(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
}

RowFormat deliveredFormat(const Page& page) {
    const bool isGray = page.color == Color::whiteIsZero || page.color == Color::gray;
    const bool is16 = page.color != Color::rendered && page.bits > 8;
    return {.width = page.format.width,
            .height = page.format.height,
            .model = isGray ? ColorModel::gray : ColorModel::rgb,
            .hasAlpha = page.alpha >= 0,
            .depth = is16 ? SampleDepth::bits16 : SampleDepth::bits8};
}

} // namespace

unsigned Page::colorSamples() const {
    switch (color) {
    case Color::whiteIsZero:
    case Color::gray:
    case Color::palette:
    case Color::rendered:
        return 1;
    case Color::cmyk:
        return 4;
    default:
        return 3;
    }
}

bool Page::isDeliveredAsStored() const {
    return (color == Color::gray || color == Color::rgb) && (bits == 8 || bits == 16)
           && numbers == Numbers::unsignedIntegers && samples == format.channels() && !isPremultiplied
           && (!isPlanar || samples == 1);
}

Result<Page> readPage(const File& file, std::uint64_t directory) {
    Page page;
    page.directory = directory;
    page.format.width = file.longNumber(TIFFTAG_IMAGEWIDTH, 0);
    page.format.height = file.longNumber(TIFFTAG_IMAGELENGTH, 0);
    if (!page.format.isWithinLimits())
        return Failure{page.format.pixels() == 0 ? Reason::empty : Reason::tooLarge,
                       "the TIFF picture has no or too many pixels"};
    const std::uint16_t compression = file.shortNumber(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (!file.library().isCodecConfigured(compression))
        return unsupported("this compression");
    page.isCompressed = compression != COMPRESSION_NONE;
    page.bits = file.shortNumber(TIFFTAG_BITSPERSAMPLE, 1);
    page.samples = file.shortNumber(TIFFTAG_SAMPLESPERPIXEL, 1);
    page.isPlanar = file.shortNumber(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
    page.isYCbCrJPEG = compression == COMPRESSION_JPEG && !page.isPlanar && page.bits == 8
                       && file.shortNumber(TIFFTAG_PHOTOMETRIC, 0) == PHOTOMETRIC_YCBCR;
    page.orientation = storedOrientation(file);
    readBlocks(file, page);
    TRY(readSamples(file, page));
    prepare(file, page);
    TRY(checkBlocks(file, page));
    page.format = deliveredFormat(page);
    page.resolution = storedResolution(file);
    page.icc = storedICC(file);
    return page;
}

Result<std::unique_ptr<File>> reopenPage(const Input& input, const Page& page) {
    std::unique_ptr<File> file = TRY(File::open(input, page.directory));
    const Result<Page> again = readPage(*file, page.directory);
    if (!again || !(*again == page))
        return Failure{Reason::malformed, "the TIFF picture changed while it was read"};
    return file;
}

} // namespace kestrine::tiff
