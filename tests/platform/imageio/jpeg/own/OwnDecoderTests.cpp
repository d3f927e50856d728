// For every file, our own decoder with libjpeg-turbo as fallback gives the result of libjpeg-turbo alone: the
// same rows, or a failure.

#include "tests/platform/imageio/jpeg/JPEGRecipe.h"
#include "tests/platform/imageio/jpeg/JPEGSurgery.h"
#include "tests/platform/imageio/jpeg/own/BothDecoders.h"
#include "tests/support/Pictures.h"

namespace kestrine::jpeg {

using testing::cutAt;
using testing::makeJPEG;
using testing::markerPosition;
using testing::Outcome;
using testing::outcomeOf;
using testing::sameWithBoth;
using testing::scanPosition;
using testing::segmentOf;
using testing::withByte;
using testing::withInserted;

namespace {

bool isDecoded(const Bytes& file) { return outcomeOf(file) == Outcome::decoded; }
bool failsInTheScan(const Bytes& file) { return outcomeOf(file) == Outcome::failed; }
bool isRefused(const Bytes& file) { return outcomeOf(file) == Outcome::refused; }

/// A small file with several bands, restart markers and chroma that is smoothed across the bands.
Bytes smallFile() { return makeJPEG({.width = 40, .height = 52, .quality = 60, .restartInterval = 4}); }

/// Offset of the identifier of component 0, 1 or 2.
std::size_t identifierInFrame(const Bytes& file, std::size_t component) {
    return markerPosition(file, 0xC0) + 10 + 3 * component;
}
std::size_t identifierInScan(const Bytes& file, std::size_t component) {
    return markerPosition(file, 0xDA) + 5 + 2 * component;
}
Bytes withIdentifiers(Bytes file, const char* identifiers) {
    for (std::size_t c = 0; c < 3; ++c)
        file[identifierInFrame(file, c)] = file[identifierInScan(file, c)] =
            static_cast<std::uint8_t>(identifiers[c]);
    return file;
}

Bytes withoutSegment(Bytes file, std::uint8_t code) {
    const std::size_t start = markerPosition(file, code);
    const std::size_t length = 2 + static_cast<std::size_t>(file[start + 2] << 8 | file[start + 3]);
    file.erase(file.begin() + static_cast<std::ptrdiff_t>(start),
               file.begin() + static_cast<std::ptrdiff_t>(start + length));
    return file;
}

const Bytes adobeHead = {'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0};

Bytes adobeSegment(std::uint8_t transform) {
    return segmentOf(0xEE, withInserted(adobeHead, adobeHead.size(), {transform}));
}

} // namespace

TEST(OwnDecoder, aFileCutAtAnyByteIsDecodedAsByTheLibrary) {
    const Bytes whole = smallFile();
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        for (const int halvings : {0, 1})
            EXPECT_TRUE(sameWithBoth(cutAt(whole, length), halvings))
                << length << " bytes, " << halvings << " halvings";
    }
}

TEST(OwnDecoder, aFileWithAnyByteChangedIsDecodedAsByTheLibrary) {
    const Bytes whole = smallFile();
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const int flip : {0x01, 0x10, 0x80, 0xFF}) {
            const Bytes file = withByte(whole, at, whole[at] ^ flip);
            EXPECT_TRUE(sameWithBoth(file, flip == 0x10 ? 1 : 0)) << "byte " << at << " xor " << flip;
        }
        EXPECT_TRUE(sameWithBoth(withByte(whole, at, 0xFF))) << "byte " << at << " is FF";
    }
}

TEST(OwnDecoder, theLibraryDeliversTheRowsAfterAFailure) {
    const Bytes whole = makeJPEG({.width = 200, .height = 200});
    const std::size_t scan = scanPosition(whole);
    for (const std::size_t part : {2, 4, 6, 8, 9}) {
        const Bytes file = cutAt(whole, scan + (whole.size() - scan) * part / 10);
        EXPECT_TRUE(failsInTheScan(file));
        for (const int halvings : {0, 1, 2, 3})
            EXPECT_TRUE(sameWithBoth(file, halvings)) << part << " tenths";
    }
}

TEST(OwnDecoder, paddingBeforeMarkersIsAccepted) {
    Bytes file = smallFile();
    constexpr std::uint8_t codes[] = {0xC4, 0xDB, 0xC0, 0xDD, 0xDA, 0xD0, 0xD1, 0xD9};
    for (const std::uint8_t code : codes)
        file = withInserted(file, markerPosition(file, code), {0xFF, 0xFF});
    EXPECT_TRUE(isDecoded(file));
    EXPECT_TRUE(sameWithBoth(file));
}

TEST(OwnDecoder, bytesAfterTheLastMCUAreIgnored) {
    const Bytes whole = smallFile();
    const Bytes withGarbage = withInserted(whole, whole.size(), {0xFF, 0xD0, 1, 2, 3, 0xFF});
    const Bytes withoutEnd = cutAt(whole, whole.size() - 2);
    for (const Bytes& file : {withGarbage, withoutEnd}) {
        EXPECT_TRUE(isDecoded(file));
        EXPECT_TRUE(sameWithBoth(file));
    }
}

TEST(OwnDecoder, commentsOfEveryLengthAreSkipped) {
    const Bytes whole =
        makeJPEG({.width = 400, .height = 300, .quality = 97, .content = testing::Content::noise});
    ASSERT_GT(whole.size(), 3U << 16); // several times the window
    for (const std::size_t length : {0, 1, 2, 3, 7, 8, 9, 65533}) {
        const Bytes file = withInserted(whole, 2, segmentOf(0xFE, Bytes(length, 0xFF)));
        EXPECT_TRUE(isDecoded(file));
        EXPECT_TRUE(sameWithBoth(file)) << length;
    }
}

TEST(OwnDecoder, theColourModelFollowsFromJFIFAdobeAndTheIdentifiers) {
    const Bytes jfif = smallFile(), bare = withoutSegment(jfif, 0xE0);
    const struct {
        Bytes file;
        bool isDecoded;
    } cases[] = {
        {bare, true},
        {withIdentifiers(jfif, "RGB"), true},
        {withIdentifiers(bare, "RGB"), false},
        {withIdentifiers(bare, "abc"), true},
        {withInserted(bare, 2, adobeSegment(1)), true},
        {withInserted(bare, 2, adobeSegment(0)), false},
        {withInserted(bare, 2, adobeSegment(2)), true},
        {withInserted(jfif, 2, adobeSegment(0)), true},
        {makeJPEG({.isStoredAsRGB = true}), false},
    };
    for (const auto& [file, isExpected] : cases) {
        EXPECT_EQ(isDecoded(file), isExpected) << &file - &cases[0].file;
        EXPECT_TRUE(sameWithBoth(file));
    }
}

TEST(OwnDecoder, unusualHeadersAreLeftToTheLibrary) {
    const Bytes file = smallFile();
    const std::size_t frame = markerPosition(file, 0xC0), scan = markerPosition(file, 0xDA);
    const std::size_t quantisers = markerPosition(file, 0xDB), codes = markerPosition(file, 0xC4);
    const Bytes cases[] = {
        makeJPEG({.sampling = {{{{3, 1}, {1, 1}, {1, 1}}}}}),
        withByte(file, frame + 1, 0xC9),      // arithmetic coding
        withByte(file, frame + 4, 12),        // bits per sample
        withByte(file, frame + 6, 0),         // no height (and 0 in the byte before)
        withByte(file, frame + 9, 2),         // components
        withByte(file, frame + 10, 2),        // two components with one identifier
        withByte(file, scan + 5, 7),          // an unknown identifier
        withByte(file, scan + 6, 0x04),       // an unknown table
        withByte(file, scan + 12, 5),         // last coefficient
        withByte(file, scan + 13, 0x01),      // approximation
        withByte(file, quantisers + 4, 0x20), // precision
        withByte(file, quantisers + 5, 0),    // a quantiser of zero
        withByte(file, codes + 5, 200),       // too many codes of one bit
        withByte(file, codes + 21, 12),       // a DC difference of 12 bits
        withoutSegment(file, 0xC4),
        withoutSegment(file, 0xDB),
        withInserted(file, frame,
                     {0x00, 0xFF, 0xD0}), // a byte before a restart marker, which counts as damage
        Bytes(cutAt(file, scan)),
    };
    for (const Bytes& unusual : cases) {
        EXPECT_TRUE(isRefused(unusual)) << "case " << &unusual - cases;
        EXPECT_TRUE(sameWithBoth(unusual)) << "case " << &unusual - cases;
    }
}

TEST(OwnDecoder, whatTheLibrarySkipsBetweenSegmentsIsSkipped) {
    const Bytes file = smallFile();
    const std::size_t frame = markerPosition(file, 0xC0), scan = markerPosition(file, 0xDA);
    const Bytes cases[] = {
        withInserted(file, frame, {0x00}),            // a byte
        withInserted(file, frame, {0xFF, 0xD0}),      // a restart marker
        withInserted(file, scan, {0xFF, 0x01}),       // a reserved marker
        withInserted(file, scan, {0xFF, 0xE5, 0, 1}), // a segment that is shorter than its length field
    };
    for (const Bytes& skipped : cases) {
        EXPECT_TRUE(isDecoded(skipped)) << "case " << &skipped - cases;
        EXPECT_TRUE(sameWithBoth(skipped)) << "case " << &skipped - cases;
    }
}

TEST(OwnDecoder, unusualScansAreLeftToTheLibrary) {
    const Bytes file = smallFile();
    const std::size_t scan = scanPosition(file);
    const std::size_t first = markerPosition(file, 0xD0, scan), second = markerPosition(file, 0xD1, scan);
    Bytes withoutFirst = file;
    withoutFirst.erase(withoutFirst.begin() + static_cast<std::ptrdiff_t>(first),
                       withoutFirst.begin() + static_cast<std::ptrdiff_t>(first + 2));
    const Bytes cases[] = {
        withByte(file, second + 1, 0xD2),                 // another number
        withoutFirst,                                     // a marker is missing
        withInserted(file, first, {0x00}),                // an additional byte before it
        withInserted(file, scan + 3, {0xFF, 0xD0}),       // an additional marker
        withInserted(file, scan + 3, {0xFF, 0xE0, 0, 2}), // a segment in the scan
        withInserted(file, first, {0xFF, 0xFF, 0x00}),    // padding before a byte of the scan
        cutAt(file, second),
    };
    for (const Bytes& unusual : cases) {
        EXPECT_TRUE(failsInTheScan(unusual)) << "case " << &unusual - cases;
        EXPECT_TRUE(sameWithBoth(unusual)) << "case " << &unusual - cases;
    }
}

TEST(OwnDecoder, rowsCanBeReadAfterTheDecoderIsDestroyed) {
    const Bytes file = cutAt(smallFile(), 700); // so that the library is also needed
    auto decoder = *openDecoder(readerOfBytes(file), DecoderChoice::ownFirst);
    const RowSourcePointer rows = *decoder->rows(0, 0);
    decoder.reset();
    EXPECT_TRUE(
        testing::samePicture(*readAllRows(*rows), *testing::decoded(file, DecoderChoice::libraryOnly, 0)));
}

} // namespace kestrine::jpeg
