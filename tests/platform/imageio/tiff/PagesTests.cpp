// The TIFF decoder with files that have several pages or EXIF, and with damaged and unsupported files.
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/tiff/TIFFRecipe.h"
#include "tests/support/Pictures.h"

#include "platform/imageio/exif/CarriedExif.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "platform/imageio/tiff/Library.h"

#include <algorithm>
#include <cstring>

namespace kestrine::testing {

namespace {

using Numbers = std::vector<std::uint16_t>;

TIFFRecipe pageOfWidth(std::uint32_t width) { return {.width = width}; }

std::uint32_t little32(const Bytes& file, std::size_t at) {
    std::uint32_t number = 0;
    std::memcpy(&number, file.data() + at, 4);
    return number;
}

/// The position of the pointer to the directory after the one at `directory`, in a little-endian file.
std::size_t nextPointerAt(const Bytes& file, std::size_t directory) {
    return directory + 2 + 12 * static_cast<std::size_t>(file[directory] | file[directory + 1] << 8);
}

void putLittle32(Bytes& file, std::size_t at, std::uint32_t number) {
    std::memcpy(file.data() + at, &number, 4);
}

/// The position of a tag's value in the first directory of a little-endian file.
std::size_t valueAt(const Bytes& file, std::uint16_t tag) {
    const std::size_t directory = little32(file, 4);
    for (std::size_t entry = directory + 2; entry < nextPointerAt(file, directory); entry += 12)
        if ((file[entry] | file[entry + 1] << 8) == tag)
            return entry + 8;
    ADD_FAILURE() << "no tag " << tag;
    return 0;
}

/// A page whose EXIF directory states Adobe RGB and has a long string.
Bytes fileWithExif(const char* mode, TIFFRecipe page = {}) {
    page.tags = [tags = page.tags](TIFF* tiff) {
        tags(tiff);
        TIFFSetField(tiff, TIFFTAG_MAKE, "Maker of cameras");
        TIFFSetField(tiff, TIFFTAG_SOFTWARE, "Test");
        TIFFSetField(tiff, TIFFTAG_EXIFIFD, std::uint64_t{0});
    };
    Bytes file = makeTIFF(page, mode);
    const bool isBigEndian = file[0] == 'M';
    const auto append = [&](std::uint64_t number, int bytes) {
        for (int i = 0; i < bytes; ++i)
            file.push_back(static_cast<std::uint8_t>(number >> 8 * (isBigEndian ? bytes - 1 - i : i)));
    };
    const auto exifAt = static_cast<std::uint32_t>(file.size());
    append(2, 2);
    append(0x9004, 2), append(2, 2), append(20, 4), append(exifAt + 30, 4);
    append(0xA001, 2), append(3, 2), append(1, 4), append(2, 2), append(0, 2);
    append(0, 4);
    for (const char character : std::string_view("2024:05:06 07:08:09\0", 20))
        file.push_back(static_cast<std::uint8_t>(character));
    // The pointer that was written as 0 is the only LONG entry of tag 34665.
    const Bytes entry = isBigEndian ? Bytes{0x87, 0x69} : Bytes{0x69, 0x87};
    const auto found = std::search(file.begin(), file.end(), entry.begin(), entry.end());
    Bytes offset;
    for (int i = 0; i < 4; ++i)
        offset.push_back(static_cast<std::uint8_t>(exifAt >> 8 * (isBigEndian ? 3 - i : i)));
    std::copy(offset.begin(), offset.end(), found + 8);
    return file;
}

} // namespace

TEST(TIFFPages, everyPageIsAFrameInStoredOrder) {
    for (const char* mode : {"wl", "wb8"}) {
        const Bytes file = makeTIFF({pageOfWidth(5), pageOfWidth(9), pageOfWidth(2)}, mode);
        const Decoded second = decodeSound(tiff::codec, file, 1);
        ASSERT_EQ(second.frames.size(), 3u);
        EXPECT_EQ(second.frames[0].format.width, 5u);
        EXPECT_EQ(second.frames[2].format.width, 2u);
        EXPECT_EQ(second.pixels.format.width, 9u);
        EXPECT_EQ(second.contents, (FileContents{FileContents::Kind::pages, 3}));
        EXPECT_EQ(sampleAt(second.pixels, 8, 1, 0), 13u * 8 + 29);
    }
}

TEST(TIFFPages, aLoopEndsTheChain) {
    Bytes file = makeTIFF({pageOfWidth(5), pageOfWidth(9)});
    const std::uint32_t first = little32(file, 4), second = little32(file, nextPointerAt(file, first));
    putLittle32(file, nextPointerAt(file, second), first);
    EXPECT_EQ(decodeSound(tiff::codec, file).frames.size(), 2u);
    putLittle32(file, nextPointerAt(file, second), second);
    EXPECT_EQ(decodeSound(tiff::codec, file).frames.size(), 2u);
}

TEST(TIFFPages, atMost1000PagesAreRead) {
    const TIFFRecipe small{.width = 1, .height = 1, .samples = 1, .photometric = PHOTOMETRIC_MINISBLACK};
    EXPECT_EQ(decodeSound(tiff::codec, makeTIFF(std::vector(1002, small))).frames.size(), 1000u);
}

TEST(TIFFPages, aPointerBeyondTheEndMeansATruncatedFile) {
    Bytes file = makeTIFF(pageOfWidth(5));
    putLittle32(file, nextPointerAt(file, little32(file, 4)), 1'000'000);
    const auto decoder = *tiff::codec.open(readerOfBytes(file));
    ASSERT_TRUE(decoder->rows(0, 0).ok());
    ASSERT_TRUE(decoder->damage().has_value());
    EXPECT_EQ(decoder->damage()->reason, Reason::truncated);
    TIFFRecipe copy = pageOfWidth(5);
    copy.tags = [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, FILETYPE_REDUCEDIMAGE); };
    file = makeTIFF(copy);
    putLittle32(file, nextPointerAt(file, little32(file, 4)), 1'000'000);
    const Result<Decoded> decoded = decode(tiff::codec, file);
    ASSERT_FALSE(decoded.ok()) << "a preview must not stand for the picture";
    EXPECT_EQ(decoded.failure().reason, Reason::truncated);
}

TEST(TIFFPages, aLaterPageThatCannotBeDecodedIsLeftOut) {
    TIFFRecipe odd{.width = 7};
    odd.tags = [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_COMPLEXINT); };
    const Decoded decoded = decodeSound(tiff::codec, makeTIFF({pageOfWidth(5), odd, pageOfWidth(9)}));
    ASSERT_EQ(decoded.frames.size(), 2u);
    EXPECT_EQ(decoded.frames[1].format.width, 9u);
    const Result<Decoded> oddFirst = decode(tiff::codec, makeTIFF({odd, pageOfWidth(9)}));
    ASSERT_FALSE(oddFirst.ok());
    EXPECT_EQ(oddFirst.failure().reason, Reason::unsupported);
}

TEST(TIFFPages, theExifDirectoryIsReturnedAsABlock) {
    for (const char* mode : {"wl", "wb"}) {
        const Decoded decoded = decodeSound(tiff::codec, fileWithExif(mode));
        ASSERT_FALSE(decoded.exif.empty()) << mode;
        EXPECT_EQ(decoded.exif[0], mode[1] == 'b' ? 'M' : 'I');
        EXPECT_TRUE(readExifFacts(decoded.exif).isAdobeRGB);
        const Bytes carried = carriedExif(decoded.exif, {10, 10});
        const std::string text(carried.begin(), carried.end());
        EXPECT_NE(text.find("Maker of cameras"), std::string::npos);
        EXPECT_NE(text.find("2024:05:06 07:08:09"), std::string::npos);
        EXPECT_EQ(decoded.frame().profile, ColorProfile::adobeRGB());
    }
}

TEST(TIFFPages, aSubPageThatIsThePictureHasTheExifOfItsParentPage) {
    TIFFRecipe preview{.width = 5, .subPages = {pageOfWidth(9)}};
    preview.tags = [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, FILETYPE_REDUCEDIMAGE); };
    const Decoded decoded = decodeSound(tiff::codec, fileWithExif("wl", preview));
    EXPECT_EQ(decoded.pixels.format.width, 9u);
    EXPECT_FALSE(decoded.exif.empty());
    EXPECT_EQ(decoded.frame().profile, ColorProfile::adobeRGB());
}

TEST(TIFFPages, aPageWithoutExifHasNoBlock) {
    EXPECT_TRUE(decodeSound(tiff::codec, makeTIFF(TIFFRecipe{})).exif.empty());
}

TEST(TIFFPages, anExifPointerBackToThePageIsHarmless) {
    Bytes file = fileWithExif("wl");
    putLittle32(file, valueAt(file, 34665), little32(file, 4));
    EXPECT_LT(decodeSound(tiff::codec, file).exif.size(), 1000u);
}

TEST(TIFFPages, aFileCutOffAnywhereIsRefused) {
    for (const std::uint16_t compression : Numbers{COMPRESSION_NONE, COMPRESSION_LZW}) {
        const Bytes file = makeTIFF(TIFFRecipe{.compression = compression});
        for (std::size_t length = 0; length < file.size(); ++length)
            EXPECT_TRUE(failsToDecode(
                tiff::codec, Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length))))
                << length << " of " << file.size() << " bytes";
    }
}

TEST(TIFFPages, stripsBeyondTheEndOfTheFileAreRefused) {
    Bytes file = makeTIFF(TIFFRecipe{.rowsPerStrip = 11});
    putLittle32(file, valueAt(file, TIFFTAG_STRIPOFFSETS), static_cast<std::uint32_t>(file.size()) - 20);
    const Result<Decoded> decoded = decode(tiff::codec, file);
    ASSERT_FALSE(decoded.ok());
    EXPECT_EQ(decoded.failure().reason, Reason::truncated);
}

TEST(TIFFPages, damagedCompressedPixelsAreRefused) {
    Bytes file = makeTIFF(TIFFRecipe{.compression = COMPRESSION_ADOBE_DEFLATE, .rowsPerStrip = 11});
    const std::uint32_t strip = little32(file, valueAt(file, TIFFTAG_STRIPOFFSETS));
    std::fill_n(file.begin() + strip + 2, 20, std::uint8_t{0xFF});
    EXPECT_TRUE(failsToDecode(tiff::codec, file));
}

TEST(TIFFPages, sizesBeyondTheLimitsAreRefusedBeforeAllocation) {
    struct Case {
        std::uint32_t width, height;
        Reason reason;
    };
    const Bytes sound = makeTIFF(TIFFRecipe{.compression = COMPRESSION_LZW, .rowsPerStrip = 11});
    for (const Case& c : {Case{0x7FFFFFFF, 11, Reason::tooLarge},
                          {40'000, 40'000, Reason::tooLarge},
                          {1'000'000, 1, Reason::truncated}}) {
        Bytes file = sound;
        putLittle32(file, valueAt(file, TIFFTAG_IMAGEWIDTH) - 6, 4 | 1 << 16);
        putLittle32(file, valueAt(file, TIFFTAG_IMAGEWIDTH), c.width);
        putLittle32(file, valueAt(file, TIFFTAG_IMAGELENGTH), c.height);
        const Result<Decoded> decoded = decode(tiff::codec, file);
        ASSERT_FALSE(decoded.ok()) << c.width;
        EXPECT_EQ(decoded.failure().reason, c.reason) << c.width << " " << decoded.failure().text;
    }
}

TEST(TIFFPages, tilesThatTheFileCannotHoldAreRefused) {
    Bytes file =
        makeTIFF(TIFFRecipe{.compression = COMPRESSION_ADOBE_DEFLATE, .tileWidth = 16, .tileHeight = 16});
    putLittle32(file, valueAt(file, TIFFTAG_TILEWIDTH) - 6, 4 | 1 << 16);
    putLittle32(file, valueAt(file, TIFFTAG_TILELENGTH) - 6, 4 | 1 << 16);
    for (const std::uint32_t side : {4096u, 1u << 16, 1u << 28}) {
        putLittle32(file, valueAt(file, TIFFTAG_TILEWIDTH), side);
        putLittle32(file, valueAt(file, TIFFTAG_TILELENGTH), side);
        EXPECT_TRUE(failsToDecode(tiff::codec, file)) << side;
    }
}

TEST(TIFFPages, hundredsOfSamplesPerPixelAreUnsupported) {
    const Result<Decoded> decoded =
        decode(tiff::codec, makeTIFF(TIFFRecipe{.width = 2, .height = 2, .samples = 65}));
    ASSERT_FALSE(decoded.ok());
    EXPECT_EQ(decoded.failure().reason, Reason::unsupported);
}

TEST(TIFFPages, onlyTIFFHeadersAreRecognised) {
    struct Case {
        Bytes head;
        bool isTIFF;
    };
    for (const Case& c : {Case{{'I', 'I', 42, 0}, true},
                          {{'M', 'M', 0, 42}, true},
                          {{'I', 'I', 43, 0}, true},
                          {{'M', 'M', 0, 43}, true},
                          {{'I', 'I', 0, 42}, false},
                          {{'M', 'M', 42, 0}, false},
                          {{'I', 'M', 42, 0}, false},
                          {{'I', 'I', 42}, false},
                          {{}, false}})
        EXPECT_EQ(tiff::codec.recognises(c.head), c.isTIFF);
}

TEST(TIFFPages, rowsCanBeReadAgainAndOutliveTheDecoder) {
    auto decoder = tiff::codec.open(readerOfBytes(makeTIFF({pageOfWidth(5), pageOfWidth(9)})));
    ASSERT_TRUE(decoder.ok());
    auto first = (*decoder)->rows(1, 0), second = (*decoder)->rows(1, 0);
    ASSERT_TRUE(first.ok() && second.ok());
    decoder->reset();
    EXPECT_TRUE(samePicture(*readAllRows(**first), *readAllRows(**second)));
}

TEST(TIFFPages, aFileThatHasChangedIsNotReadAgain) {
    class ChangingReader final : public ByteReader {
    public:
        explicit ChangingReader(Bytes bytes) : bytes_(std::move(bytes)) {}
        std::uint64_t size() const override { return bytes_.size(); }
        std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
            return readerOfBytes(bytes_)->readAt(offset, into);
        }
        Bytes bytes_;
    };
    const auto reader = std::make_shared<ChangingReader>(makeTIFF(pageOfWidth(5)));
    auto decoder = tiff::codec.open(reader);
    ASSERT_TRUE(decoder.ok());
    ASSERT_TRUE((*decoder)->rows(0, 0).ok());
    reader->bytes_[valueAt(reader->bytes_, TIFFTAG_IMAGEWIDTH)] = 6;
    EXPECT_FALSE((*decoder)->rows(0, 0).ok());
}

TEST(TIFFPages, aMissingLibraryIsReportedWithItsPackage) {
    const Result<tiff::Functions> functions = tiff::loadFunctions({"libtiff.so.0"});
    ASSERT_FALSE(functions.ok());
    EXPECT_EQ(functions.failure().reason, Reason::unsupported);
    EXPECT_NE(functions.failure().text.find("libtiff6"), std::string::npos);
}

TEST(TIFFPages, aLibraryWithoutAFunctionCountsAsMissing) {
    EXPECT_FALSE(tiff::loadFunctions({"libm.so.6"}).ok());
}

} // namespace kestrine::testing
