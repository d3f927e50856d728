// Puts the input as LZW data into a TIFF file of one strip or tile. Our own decompression and libtiff must
// give the same rows, or the same failure.
#include "fuzz/Require.h"
#include "platform/host/BigEndian.h"
#include "platform/host/LittleEndian.h"
#include "platform/imageio/tiff/StoredRows.h"

#include <algorithm>
#include <string>
#include <utility>

namespace kestrine {

namespace {

constexpr std::size_t recipeBytes = 3;
constexpr std::uint64_t directoryAt = 8;

/// What the first bytes of the input choose.
struct Recipe {
    bool isBigEndian, isTiled, areDifferences;
    unsigned bits, samples, width, height;

    explicit Recipe(ByteView data)
        : isBigEndian((data[0] & 1) != 0), isTiled((data[0] & 2) != 0), areDifferences((data[0] & 4) != 0),
          bits(data[0] & 8    ? 16
               : data[0] & 16 ? 4
                              : 8),
          samples(1 + data[0] / 32), width(side(data[1])), height(side(data[2])) {}

private:
    unsigned side(std::uint8_t byte) const { return isTiled ? 16 + byte / 16 * 16U : 1U + byte; }
};

using Entries = std::vector<std::pair<std::uint16_t, std::uint64_t>>;

Entries entriesOf(const Recipe& recipe, std::uint64_t codesAt, std::uint64_t codeBytes) {
    const bool tiled = recipe.isTiled;
    Entries entries = {
        {TIFFTAG_IMAGEWIDTH, recipe.width},
        {TIFFTAG_IMAGELENGTH, recipe.height},
        {TIFFTAG_BITSPERSAMPLE, recipe.bits},
        {TIFFTAG_COMPRESSION, COMPRESSION_LZW},
        {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK},
        {TIFFTAG_SAMPLESPERPIXEL, recipe.samples},
        {TIFFTAG_PREDICTOR, recipe.areDifferences ? PREDICTOR_HORIZONTAL : PREDICTOR_NONE},
        {tiled ? TIFFTAG_TILEOFFSETS : TIFFTAG_STRIPOFFSETS, codesAt},
        {tiled ? TIFFTAG_TILEBYTECOUNTS : TIFFTAG_STRIPBYTECOUNTS, codeBytes},
        {tiled ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP, recipe.height},
    };
    if (tiled)
        entries.emplace_back(TIFFTAG_TILEWIDTH, recipe.width);
    std::sort(entries.begin(), entries.end());
    return entries;
}

Bytes makeFile(const Recipe& recipe, ByteView codes) {
    constexpr std::uint64_t longNumber = 4, entryBytes = 12;
    const std::uint64_t codesAt = directoryAt + 2 + entriesOf(recipe, 0, 0).size() * entryBytes + 4;
    Bytes file = recipe.isBigEndian ? Bytes{'M', 'M', 0, 42} : Bytes{'I', 'I', 42, 0};
    const auto append = [&](std::uint64_t number, int size) {
        recipe.isBigEndian ? appendBigEndian(file, number, size) : appendLittleEndian(file, number, size);
    };
    const Entries entries = entriesOf(recipe, codesAt, codes.size());
    append(directoryAt, 4);
    append(entries.size(), 2);
    for (const auto& [tag, value] : entries) {
        append(tag, 2);
        append(longNumber, 2);
        append(1, 4);
        append(value, 4);
    }
    append(0, 4); // no next directory
    file.insert(file.end(), codes.begin(), codes.end());
    return file;
}

/// All rows, or why they cannot be read. The page itself must be readable.
std::string rowsOf(const std::shared_ptr<const ByteReader>& reader, tiff::BlockDecoder decoder) {
    Result<std::unique_ptr<tiff::File>> file =
        tiff::File::open({reader, std::make_shared<DamageRecord>()}, directoryAt);
    fuzzing::require(file.ok());
    const Result<tiff::Page> page = tiff::readPage(**file, directoryAt);
    if (!page) // too short for its pixels, or differences of 4 bits
        return page.failure().text;
    const auto rows = tiff::StoredRows::create(std::move(*file), *page, 0, decoder);
    std::string all;
    for (std::uint32_t y = 0; y < page->format.height; ++y) {
        const Result<ByteView> row = rows->row(y);
        if (!row)
            return row.failure().text;
        all.append(row->begin(), row->end());
    }
    return all;
}

void compareDecoders(ByteView input) {
    const auto file = readerOfBytes(makeFile(Recipe(input), input.subspan(recipeBytes)));
    fuzzing::require(rowsOf(file, tiff::BlockDecoder::ownFirst)
                     == rowsOf(file, tiff::BlockDecoder::libraryOnly));
}

} // namespace

} // namespace kestrine

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrine;
    if (size > recipeBytes)
        compareDecoders({data, size});
    return 0;
}
