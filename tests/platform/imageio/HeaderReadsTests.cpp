// The header of a file is read once before the first row.
#include "platform/imageio/Codecs.h"
#include "tests/platform/imageio/gif/GIFFile.h"
#include "tests/platform/imageio/jpeg/JPEGRecipe.h"
#include "tests/platform/imageio/jpeg/JPEGSurgery.h"
#include "tests/platform/imageio/png/PNGRecipe.h"
#include "tests/platform/imageio/tiff/TIFFRecipe.h"

#include <atomic>
#include <gtest/gtest.h>

namespace kestrine::testing {

namespace {

/// Counts how often one byte of a file is read.
class CountingReader final : public ByteReader {
public:
    CountingReader(Bytes bytes, std::uint64_t counted)
        : bytes_(readerOfBytes(std::move(bytes))), counted_(counted) {}

    std::uint64_t size() const override { return bytes_->size(); }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        if (offset <= counted_ && counted_ - offset < into.size())
            ++count;
        return bytes_->readAt(offset, into);
    }

    mutable std::atomic<int> count = 0;

private:
    const std::shared_ptr<const ByteReader> bytes_;
    const std::uint64_t counted_;
};

/// How often the byte at `position` is read between opening the file and its first row, and then until the
/// first row of a second reading.
struct Reads {
    int first = 0, second = 0;
};
Reads readsOfByte(const ImageCodec& codec, const Bytes& file, std::uint64_t position) {
    const auto reader = std::make_shared<CountingReader>(file, position);
    const auto decoder = codec.open(reader);
    EXPECT_TRUE(decoder.ok());
    Reads reads;
    for (int* count : {&reads.first, &reads.second}) {
        const auto rows = (*decoder)->rows(0, 0);
        EXPECT_TRUE(rows.ok());
        Bytes row((*rows)->format().bytesPerRow());
        EXPECT_TRUE((*rows)->readRow(row).ok());
        *count = reader->count;
    }
    return reads;
}

/// Reads of a byte of the quantisers.
Reads readsOfJPEGHeader(const JPEGRecipe& recipe) {
    const Bytes file = makeJPEG(recipe);
    return readsOfByte(jpeg::codec, file, markerPosition(file, 0xDB) + 8);
}

} // namespace

TEST(HeaderReads, theHeaderOfAJPEGForOurOwnDecoderIsReadOnce) {
    for (const bool isProgressive : {false, true})
        EXPECT_EQ(readsOfJPEGHeader({.isProgressive = isProgressive}).second, 1);
}

TEST(HeaderReads, theHeaderOfAJPEGForTheLibraryIsReadOncePerReading) {
    const Reads reads = readsOfJPEGHeader({.isProgressive = true, .isStoredAsRGB = true});
    EXPECT_EQ(reads.first, 1);
    EXPECT_EQ(reads.second, 2);
}

TEST(HeaderReads, theHeaderOfAPNGIsReadOncePerReading) {
    constexpr std::uint64_t bitDepth = 24;
    std::mt19937 random;
    const Bytes file = PNGRecipe{.height = 90}.randomRows(random).compress().make();
    const Reads reads = readsOfByte(png::codec, file, bitDepth);
    EXPECT_EQ(reads.first, 1);
    EXPECT_EQ(reads.second, 2);
}

TEST(HeaderReads, theChunksBeforeThePixelsOfAPNGAreWalkedOnceBesidesLibpng) {
    std::mt19937 random;
    const Bytes file = withChunk(PNGRecipe{.height = 90}.randomRows(random).compress().make(), "tEXt", {});
    const Reads reads = readsOfByte(png::codec, file, afterHeader);
    EXPECT_EQ(reads.first, 2);
    EXPECT_EQ(reads.second, 3);
}

TEST(HeaderReads, theHeaderOfAGIFIsReadOncePerReading) {
    constexpr std::uint64_t screenWidth = 6;
    const Reads reads = readsOfByte(gif::codec, GIFFile{}.make(), screenWidth);
    EXPECT_EQ(reads.first, 1);
    EXPECT_EQ(reads.second, 2);
}

TEST(HeaderReads, libtiffReadsTheDirectoryOfATIFFOncePerReading) {
    const Bytes file = makeTIFF(TIFFRecipe{});
    const std::uint64_t firstEntry =
        2 + (file[4] | std::uint64_t{file[5]} << 8 | std::uint64_t{file[6]} << 16);
    const Reads reads = readsOfByte(tiff::codec, file, firstEntry);
    const int readsOfStructure = 2; // for the list of pages, and for EXIF
    EXPECT_EQ(reads.first, readsOfStructure + 1);
    EXPECT_EQ(reads.second, reads.first + 1);
}

} // namespace kestrine::testing
