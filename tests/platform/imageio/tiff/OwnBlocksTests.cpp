// Our own decompression compared with libtiff's.
#include "platform/imageio/tiff/OwnBlocks.h"

#include "platform/imageio/tiff/PageList.h"
#include "platform/imageio/tiff/StoredRows.h"
#include "tests/platform/imageio/tiff/LZWCodes.h"
#include "tests/platform/imageio/tiff/TIFFRecipe.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <zlib.h>

namespace kestrine::testing {

namespace {

using Numbers = std::vector<std::uint16_t>;

/// The first page of a file.
struct OpenedPage {
    std::unique_ptr<tiff::File> file;
    tiff::Page page;
};

Result<OpenedPage> openPage(const Bytes& bytes) {
    const auto reader = readerOfBytes(bytes);
    const std::vector<std::uint64_t> pages = TRY(tiff::Structure(reader).pages());
    OpenedPage opened{TRY(tiff::File::open({reader, std::make_shared<DamageRecord>()}, pages.front())), {}};
    opened.page = TRY(tiff::readPage(*opened.file, pages.front()));
    return opened;
}

/// All stored rows of all planes, or the reason why there are none.
std::string storedRows(const Bytes& bytes, tiff::BlockDecoder decoder) {
    std::string all;
    for (unsigned plane = 0, planes = 1; plane < planes; ++plane) {
        Result<OpenedPage> opened = openPage(bytes);
        if (!opened)
            return opened.failure().text;
        const tiff::Page& page = opened->page;
        planes = page.planes();
        const auto rows = tiff::StoredRows::create(std::move(opened->file), page, plane, decoder);
        for (std::uint32_t y = 0; y < page.format.height; ++y) {
            const Result<ByteView> row = rows->row(y);
            if (!row)
                return row.failure().text;
            all.append(row->begin(), row->end());
        }
    }
    return all;
}

void expectEqualRows(const Bytes& file, const std::string& what) {
    EXPECT_TRUE(storedRows(file, tiff::BlockDecoder::ownFirst)
                == storedRows(file, tiff::BlockDecoder::libraryOnly))
        << what;
}

/// Whether our own decompression accepts the first strip or tile.
bool isDecodedByUs(const Bytes& bytes) {
    const Result<OpenedPage> opened = openPage(bytes);
    if (!opened)
        return false;
    const tiff::Page& page = opened->page;
    const tiff::File& file = *opened->file;
    const auto own = tiff::OwnBlocks::create(file, page);
    const std::size_t rowBytes = page.tileWidth ? file.library().tileRowSize(file.handle())
                                                : file.library().scanlineSize(file.handle());
    Bytes block(rowBytes * page.blockRows);
    return own && own->decode(0, rowBytes, block);
}

/// Samples that are partly smooth and partly noise.
std::uint32_t naturalSample(std::uint32_t x, std::uint32_t y, unsigned s) {
    const std::uint32_t noise = (x * 2654435761U ^ y * 40503U ^ s * 97U) >> 7;
    return 700 * x + 300 * y + 50 * s + noise % (x / 16 % 2 == 0 ? 2 : 700);
}

TIFFRecipe naturalPage(std::uint16_t bits, std::uint16_t samples, std::uint16_t predictor) {
    TIFFRecipe page{.width = 83,
                    .height = 37,
                    .bits = bits,
                    .samples = samples,
                    .photometric =
                        static_cast<std::uint16_t>(samples < 3 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB),
                    .compression = COMPRESSION_LZW,
                    .rowsPerStrip = 16,
                    .sample = naturalSample};
    page.extraSamples = Numbers(samples < 3 ? samples - 1 : samples - 3, EXTRASAMPLE_UNSPECIFIED);
    page.tags = [predictor](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_PREDICTOR, predictor); };
    return page;
}

/// Strips and tiles, compressions and byte orders.
void expectEqualInEveryStorage(TIFFRecipe page, bool isOurs) {
    for (const std::uint16_t compression :
         Numbers{COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_DEFLATE})
        for (const std::uint32_t tile : {0, 16, 48})
            for (const char* mode : {"wl", "wb8"}) {
                page.compression = compression;
                page.tileWidth = page.tileHeight = tile;
                const Bytes file = makeTIFF(page, mode);
                expectEqualRows(file, std::to_string(compression) + " tile " + std::to_string(tile) + mode);
                EXPECT_EQ(isDecodedByUs(file), isOurs);
            }
}

/// A grey page of one strip with these LZW data.
TIFFRecipe pageOfCodes(const Bytes& codes, std::uint32_t width, std::uint32_t height,
                       std::uint16_t predictor) {
    TIFFRecipe page = naturalPage(8, 1, predictor);
    page.width = width;
    page.rowsPerStrip = page.height = height;
    page.rawStrip = codes;
    return page;
}

/// The LZW data of bytes with few values, which have strings of all lengths, with several clear codes.
Bytes variedCodes(std::size_t count, unsigned values) {
    std::mt19937 random(values);
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>(i / 400 % 3 == 0 ? 7 : random() % values);
    LZWCodes codes;
    codes.addEncoded(bytes, 700);
    codes.add(LZWCodes::end);
    return codes.bytes();
}

Bytes deflated(const Bytes& bytes) {
    uLongf size = compressBound(bytes.size());
    Bytes stream(size);
    EXPECT_EQ(compress(stream.data(), &size, bytes.data(), bytes.size()), Z_OK);
    stream.resize(size);
    return stream;
}

} // namespace

TEST(TIFFOwnBlocks, pagesOfEveryLayoutAreDecodedAsByLibtiff) {
    for (const std::uint16_t bits : Numbers{1, 2, 4, 7, 8, 12, 16, 32})
        for (const std::uint16_t samples : Numbers{1, 2, 3, 4, 5})
            for (const std::uint16_t predictor : Numbers{PREDICTOR_NONE, PREDICTOR_HORIZONTAL})
                for (const std::uint16_t planar : Numbers{PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE}) {
                    if (predictor == PREDICTOR_HORIZONTAL && bits % 8 != 0)
                        continue;
                    SCOPED_TRACE(::testing::Message()
                                 << bits << " bits, " << samples << " samples, predictor " << predictor
                                 << ", planar " << planar);
                    TIFFRecipe page = naturalPage(bits, samples, predictor);
                    page.planar = planar;
                    const bool canBeOurs = predictor == PREDICTOR_NONE || bits <= 16;
                    expectEqualInEveryStorage(page, canBeOurs);
                }
}

TEST(TIFFOwnBlocks, allSmallSizesAreDecodedAsByLibtiff) {
    for (std::uint32_t width = 1; width <= 40; ++width)
        for (const std::uint32_t height : {1, 2, 15, 16, 17, 33}) {
            TIFFRecipe page = naturalPage(8, 3, PREDICTOR_HORIZONTAL);
            page.width = width;
            page.height = height;
            expectEqualRows(makeTIFF(page), std::to_string(width) + " x " + std::to_string(height));
        }
}

TEST(TIFFOwnBlocks, otherPagesAreLeftToLibtiff) {
    TIFFRecipe packed = naturalPage(8, 3, PREDICTOR_HORIZONTAL), floats = naturalPage(32, 1, 3);
    packed.compression = COMPRESSION_PACKBITS;
    packed.tags = [](TIFF*) {};
    floats.tags = [](TIFF* tiff) {
        TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP);
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_FLOATINGPOINT);
    };
    TIFFRecipe turned = naturalPage(8, 3, PREDICTOR_NONE);
    turned.tags = [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_FILLORDER, FILLORDER_LSB2MSB); };
    for (const TIFFRecipe& page : {packed, floats, turned}) {
        const Bytes file = makeTIFF(page);
        EXPECT_FALSE(isDecodedByUs(file));
        EXPECT_EQ(storedRows(file, tiff::BlockDecoder::ownFirst).size(),
                  83 * 37 * (page.bits == 32 ? 4U : 3U));
        expectEqualRows(file, "rows");
    }
}

TEST(TIFFOwnBlocks, aSingleChangedByteHasTheEffectThatItHasInLibtiff) {
    for (const unsigned values : {2U, 5U, 256U}) {
        const Bytes sound = variedCodes(3000, values);
        for (std::size_t at = 0; at < sound.size(); ++at)
            for (const unsigned change : {0x01U, 0x10U, 0x80U, 0xFFU}) {
                Bytes codes = sound;
                codes[at] = static_cast<std::uint8_t>(codes[at] ^ change);
                expectEqualRows(makeTIFF(pageOfCodes(codes, 50, 60, PREDICTOR_HORIZONTAL)),
                                "byte " + std::to_string(at) + " of " + std::to_string(values) + " values");
            }
    }
}

TEST(TIFFOwnBlocks, dataThatEndEarlyAreTreatedAsByLibtiff) {
    for (const unsigned values : {2U, 256U}) {
        const Bytes sound = variedCodes(3000, values);
        for (std::size_t count = 1; count < sound.size(); ++count)
            expectEqualRows(
                makeTIFF(pageOfCodes(Bytes(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(count)),
                                     50, 60, PREDICTOR_NONE)),
                std::to_string(count) + " bytes of " + std::to_string(values) + " values");
    }
}

TEST(TIFFOwnBlocks, damagedDeflateDataHaveTheEffectThatTheyHaveInLibtiff) {
    constexpr std::uint32_t width = 40, height = 20;
    Bytes samples = variedCodes(3000, 5);
    samples.resize(width * height);
    const Bytes sound = deflated(samples);
    const auto check = [&](const Bytes& stream, std::size_t at) {
        TIFFRecipe page = pageOfCodes(stream, width, height, PREDICTOR_HORIZONTAL);
        page.compression = COMPRESSION_ADOBE_DEFLATE;
        expectEqualRows(makeTIFF(page), "byte " + std::to_string(at));
    };
    for (std::size_t at = 0; at < sound.size(); ++at) {
        for (const unsigned change : {0x01U, 0x10U, 0x80U, 0xFFU}) {
            Bytes stream = sound;
            stream[at] = static_cast<std::uint8_t>(stream[at] ^ change);
            check(stream, at);
        }
        if (at > 0)
            check(Bytes(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(at)), at);
    }
}

TEST(TIFFOwnBlocks, deflateDataOfAnotherLengthAreLeftToLibtiff) {
    for (const std::size_t bytes : {399, 400, 401, 800}) {
        TIFFRecipe page = pageOfCodes(deflated(Bytes(bytes, 3)), 20, 20, PREDICTOR_NONE);
        page.compression = COMPRESSION_DEFLATE;
        const Bytes file = makeTIFF(page);
        expectEqualRows(file, std::to_string(bytes));
        EXPECT_EQ(isDecodedByUs(file), bytes == 400) << bytes;
    }
}

TEST(TIFFOwnBlocks, blocksAbove16MiBAreLeftToLibtiff) {
    for (const std::uint32_t height : {4096U, 4097U}) {
        TIFFRecipe page = pageOfCodes(deflated(Bytes(4096 * height)), 4096, height, PREDICTOR_NONE);
        page.compression = COMPRESSION_ADOBE_DEFLATE;
        EXPECT_EQ(isDecodedByUs(makeTIFF(page)), height == 4096);
    }
}

TEST(TIFFOwnBlocks, blocksWithTooManyCompressedBytesAreLeftToLibtiff) {
    Bytes codes = variedCodes(3000, 5);
    codes.resize(2 * 3000 + 4096);
    EXPECT_TRUE(isDecodedByUs(makeTIFF(pageOfCodes(codes, 50, 60, PREDICTOR_NONE))));
    codes.push_back(0);
    const Bytes file = makeTIFF(pageOfCodes(codes, 50, 60, PREDICTOR_NONE));
    EXPECT_FALSE(isDecodedByUs(file));
    expectEqualRows(file, "rows");
}

TEST(TIFFOwnBlocks, stripsBeyondTheEndOfTheFileAreTreatedAsByLibtiff) {
    TIFFRecipe page = naturalPage(8, 3, PREDICTOR_HORIZONTAL);
    page.rowsPerStrip = page.height;
    Bytes file = makeTIFF(page);
    const tiff::Structure structure(readerOfBytes(file));
    const tiff::Structure::Directory directory = structure.directoryAt(structure.pages()->front());
    const auto offsets = std::ranges::find(directory, TIFFTAG_STRIPOFFSETS, &tiff::Structure::Entry::tag);
    ASSERT_NE(offsets, directory.end());
    for (std::size_t rest = 0; rest < file.size(); rest += 9) {
        const auto offset = static_cast<std::uint32_t>(file.size() - rest);
        std::memcpy(file.data() + offsets->valuesAt, &offset, sizeof offset);
        expectEqualRows(file, std::to_string(rest));
    }
}

TEST(TIFFOwnBlocks, unusualCodesAreTreatedAsByLibtiff) {
    constexpr unsigned clear = LZWCodes::clear, end = LZWCodes::end;
    using Codes = std::initializer_list<unsigned>;
    for (const Codes& codes : {Codes{'a', 'b', 'c', 'd'},
                               {'a', 'b', clear, 'c', 'd', 258},
                               {clear, clear, clear, 'a', 'b', 258},
                               {clear, 'a', 258, 259, end},
                               {clear, 'a', end, 'b', 'c', 'd'},
                               {clear, end, 'a', 'b', 'c', 'd'},
                               {clear, 'a', 300, 'b', 'c'},
                               {clear, 258, 'b', 'c', 'd'},
                               {clear, 'a', 'b', 258},
                               {end},
                               {clear}}) {
        LZWCodes stored;
        stored.add(codes);
        expectEqualRows(makeTIFF(pageOfCodes(stored.bytes(), 2, 2, PREDICTOR_NONE)), "codes");
    }
}

TEST(TIFFOwnBlocks, aTableThatIsFullAndNotClearedIsLeftToLibtiff) {
    Bytes random(6000);
    std::mt19937 generator(1);
    for (std::uint8_t& byte : random)
        byte = static_cast<std::uint8_t>(generator());
    for (const std::size_t mostStrings : {4094, 4095, 4096, 4097, 4100, 5000, 5200}) {
        LZWCodes codes;
        codes.addEncoded(random, mostStrings);
        const Bytes file = makeTIFF(pageOfCodes(codes.bytes(), 60, 100, PREDICTOR_NONE));
        expectEqualRows(file, std::to_string(mostStrings));
        EXPECT_EQ(isDecodedByUs(file), mostStrings <= 4097) << mostStrings;
    }
}

} // namespace kestrine::testing
