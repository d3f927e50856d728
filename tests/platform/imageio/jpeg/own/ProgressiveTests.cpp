// For every progressive file, our own decoder with libjpeg-turbo as fallback gives the result of
// libjpeg-turbo alone: the same rows and the same damage, or a failure.

#include "tests/platform/imageio/jpeg/JPEGRecipe.h"
#include "tests/platform/imageio/jpeg/JPEGSurgery.h"
#include "tests/platform/imageio/jpeg/own/BothDecoders.h"

#include <array>

namespace kestrine::jpeg {

using testing::cutAt;
using testing::JPEGRecipe;
using testing::makeJPEG;
using testing::markerPosition;
using testing::Outcome;
using testing::outcomeOf;
using testing::sameDamageWithBoth;
using testing::sameWithBoth;
using testing::scanPosition;
using testing::ScanRecipe;
using testing::segmentOf;
using testing::withByte;
using testing::withInserted;

namespace {

constexpr std::uint8_t startOfScan = 0xDA;

Bytes smallFile() {
    return makeJPEG({.width = 40, .height = 36, .quality = 60, .restartInterval = 4, .isProgressive = true});
}

/// Offset of the header of a scan; 0 is the first one.
std::size_t scanHeader(const Bytes& file, int number) {
    std::size_t position = markerPosition(file, startOfScan);
    for (; number > 0; --number)
        position = markerPosition(file, startOfScan, position + 2);
    return position;
}

/// Offset of the entropy-coded bytes of a scan, and of the marker after them.
std::array<std::size_t, 2> dataOfScan(const Bytes& file, int number) {
    const std::size_t header = scanHeader(file, number);
    const std::size_t begin = header + 2 + file[header + 3];
    std::size_t end = file.size();
    for (const int code : {0xC4, 0xDA, 0xD9})
        end = std::min(end, markerPosition(file, static_cast<std::uint8_t>(code), begin));
    return {begin, end};
}

/// Offset in the middle of a scan, not between FF and the byte that belongs to it.
std::size_t middleOfScan(const Bytes& file, int number) {
    const auto [begin, end] = dataOfScan(file, number);
    const std::size_t middle = (begin + end) / 2;
    return file[middle - 1] == 0xFF ? middle + 1 : middle;
}

::testing::AssertionResult isDecodedAsByTheLibrary(const Bytes& file, int halvings = 0) {
    const auto rows = sameWithBoth(file, halvings);
    return rows ? sameDamageWithBoth(file, halvings) : rows;
}

/// The DC coefficients of a grey picture with `bits` scans, then each AC coefficient in a scan of its own.
std::vector<ScanRecipe> scriptOfScans(int bits) {
    std::vector<ScanRecipe> script = {{{0}, 0, 0, 0, bits - 1}};
    for (int bit = bits - 1; bit > 0; --bit)
        script.push_back({{0}, 0, 0, bit, bit - 1});
    for (int coefficient = 1; coefficient < 64; ++coefficient)
        script.push_back({{0}, coefficient, coefficient, 0, 0});
    return script;
}

} // namespace

TEST(ProgressiveJPEG, cutAtAnyByteIsDecodedAsByTheLibrary) {
    const Bytes whole = smallFile();
    for (std::size_t length = 0; length <= whole.size(); ++length)
        for (const int halvings : {0, 3})
            EXPECT_TRUE(isDecodedAsByTheLibrary(cutAt(whole, length), halvings))
                << length << " bytes, " << halvings << " halvings";
}

TEST(ProgressiveJPEG, withAnyByteChangedIsDecodedAsByTheLibrary) {
    const Bytes whole = smallFile();
    for (std::size_t at = 0; at < whole.size(); ++at)
        for (const int flip : {0x10, 0xFF})
            EXPECT_TRUE(isDecodedAsByTheLibrary(withByte(whole, at, whole[at] ^ flip), flip == 0x10 ? 3 : 0))
                << "byte " << at << " xor " << flip;
}

TEST(ProgressiveJPEG, withDamageInOneScanHasTheRowsBeforeItFromOurDecoder) {
    const Bytes whole = makeJPEG({.width = 200, .height = 200, .isProgressive = true});
    for (int scan = 0; scan < 10; ++scan) {
        const Bytes file = withInserted(whole, middleOfScan(whole, scan), {0xFF, 0xD0});
        EXPECT_EQ(outcomeOf(file), Outcome::failed) << "scan " << scan;
        for (const int halvings : {0, 1, 2, 3})
            EXPECT_TRUE(isDecodedAsByTheLibrary(file, halvings)) << "scan " << scan;
    }
}

TEST(ProgressiveJPEG, isLeftToTheLibraryIfItsScansLackBits) {
    const std::vector<ScanRecipe> scripts[] = {
        {{{0, 1, 2}, 0, 0, 0, 0}},
        {{{0, 1, 2}, 0, 0, 0, 0}, {{0}, 1, 63, 0, 1}, {{1}, 1, 63, 0, 0}, {{2}, 1, 63, 0, 0}},
        {{{0, 1, 2}, 0, 0, 0, 0}, {{0}, 1, 63, 0, 0}, {{1}, 1, 62, 0, 0}, {{2}, 1, 63, 0, 0}},
        {{{0, 1, 2}, 0, 0, 0, 1}, {{0}, 1, 63, 0, 0}, {{1}, 1, 63, 0, 0}, {{2}, 1, 63, 0, 0}},
    };
    for (const auto& script : scripts) {
        const Bytes file = makeJPEG({.width = 64, .height = 64, .isProgressive = true, .script = script});
        EXPECT_EQ(outcomeOf(file), Outcome::refused) << "script " << &script - scripts;
        EXPECT_TRUE(isDecodedAsByTheLibrary(file)) << "script " << &script - scripts;
    }
}

TEST(ProgressiveJPEG, isLeftToTheLibraryIfAnythingBetweenItsScansIsUnusual) {
    const Bytes file = smallFile();
    const std::size_t second = scanHeader(file, 1), third = scanHeader(file, 2);
    const std::size_t codes = markerPosition(file, 0xC4, scanPosition(file));
    const Bytes secondScan(file.begin() + static_cast<std::ptrdiff_t>(second),
                           file.begin() + static_cast<std::ptrdiff_t>(third));
    const Bytes cases[] = {
        cutAt(file, file.size() - 2),                        // no end marker
        withInserted(file, second, {0xFF, 0xD9}),            // an end marker before the second scan
        withInserted(file, second, {0}),                     // a byte
        withInserted(file, second, {0xFF, 0xD0}),            // a restart marker
        withInserted(file, second, segmentOf(0xE0, {1, 2})), // an application's segment
        withInserted(file, second, segmentOf(0xDB, Bytes(65, 1))),
        withInserted(file, second, segmentOf(0xDD, {1})), // a restart interval of one byte
        withInserted(file, third, secondScan),            // a scan twice
        withByte(file, second + 5, 9),                    // an unknown component
        withByte(file, second + 6, 4),                    // an unknown table
        withByte(file, second + 7, 0),                    // first coefficient
        withByte(file, second + 8, 64),                   // last coefficient
        withByte(file, second + 9, 0x20),                 // a refinement of what was not sent
        withByte(file, codes + 5, 200),                   // too many codes of one bit
        withByte(file, codes + 4, 0x14),                  // an unknown table
    };
    for (const Bytes& unusual : cases) {
        EXPECT_EQ(outcomeOf(unusual), Outcome::refused) << "case " << &unusual - cases;
        EXPECT_TRUE(isDecodedAsByTheLibrary(unusual)) << "case " << &unusual - cases;
    }
}

TEST(ProgressiveJPEG, withBytesAfterTheLastBlockOfAScanIsDecodedAsByTheLibrary) {
    const Bytes file = smallFile(), manyAndRestart = withInserted({0xFF, 0xD0}, 0, Bytes(20, 0x12));
    for (int scan = 0; scan < 10; ++scan)
        for (const Bytes& bytes :
             {Bytes{0x12}, {0x12, 0xFF, 0xD0}, {0xFF, 0xD0, 0x12, 0xFF, 0xD0}, manyAndRestart})
            EXPECT_TRUE(isDecodedAsByTheLibrary(withInserted(file, dataOfScan(file, scan)[1], bytes)))
                << "scan " << scan;
}

TEST(ProgressiveJPEG, mayHaveCommentsAndNewRestartIntervalsBetweenItsScans) {
    const Bytes file = makeJPEG({.isProgressive = true});
    const Bytes withComment = withInserted(file, scanHeader(file, 1), segmentOf(0xFE, Bytes(40000, 0xFF)));
    const Bytes withInterval = withInserted(file, scanHeader(file, 1), segmentOf(0xDD, {0, 200}));
    const Bytes withPadding = withInserted(file, scanHeader(file, 1), {0xFF, 0xFF});
    for (const Bytes& changed : {withComment, withInterval, withPadding}) {
        EXPECT_EQ(outcomeOf(changed), Outcome::decoded);
        EXPECT_TRUE(isDecodedAsByTheLibrary(changed));
    }
}

TEST(ProgressiveJPEG, mayHaveUpTo64ScansInOurDecoder) {
    for (const int bits : {1, 2}) {
        const Bytes file = makeJPEG({.width = 70,
                                     .height = 50,
                                     .isGrey = true,
                                     .isProgressive = true,
                                     .script = scriptOfScans(bits)});
        EXPECT_EQ(outcomeOf(file), bits == 1 ? Outcome::decoded : Outcome::refused);
        EXPECT_TRUE(isDecodedAsByTheLibrary(file));
    }
}

TEST(ProgressiveJPEG, isLeftToTheLibraryIfItsScansVisitMoreBlocksThanItsLengthAllows) {
    const Bytes small = makeJPEG(
        {.width = 70, .height = 50, .isGrey = true, .isProgressive = true, .script = scriptOfScans(1)});
    const std::size_t frame = markerPosition(small, 0xC2);
    for (const unsigned side : {4000, 4500}) { // 63 times 250000 or 316969 blocks; 2^24 are always allowed
        Bytes file = small;
        for (const std::size_t at : {frame + 5, frame + 7}) {
            file[at] = static_cast<std::uint8_t>(side >> 8);
            file[at + 1] = static_cast<std::uint8_t>(side);
        }
        EXPECT_EQ(outcomeOf(file), side == 4000 ? Outcome::failed : Outcome::refused);
        EXPECT_TRUE(isDecodedAsByTheLibrary(file, 3));
    }
}

} // namespace kestrine::jpeg
