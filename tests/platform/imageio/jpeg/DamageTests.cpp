// A JPEG file is damaged if the decoder had to invent pixels.
#include "platform/imageio/LocalSource.h"
#include "platform/imageio/jpeg/Decoder.h"
#include "tests/platform/imageio/jpeg/JPEGRecipe.h"
#include "tests/platform/imageio/jpeg/JPEGSurgery.h"

#include <gtest/gtest.h>

namespace kestrine::jpeg {

using testing::cutAt;
using testing::JPEGRecipe;
using testing::makeJPEG;
using testing::markerPosition;
using testing::scanPosition;
using testing::withByte;
using testing::withInserted;

namespace {

constexpr JPEGRecipe photo{.width = 64, .height = 320};
constexpr JPEGRecipe progressive{.width = 64, .height = 320, .isProgressive = true};
constexpr JPEGRecipe restarting{.width = 64, .height = 320, .restartInterval = 4};

std::optional<Failure> damageOf(const Bytes& file, int halvings = 0) {
    const auto source = *LocalSource::open(readerOfBytes(file));
    EXPECT_TRUE(readAllRows(**source->rows(0, halvings)).ok());
    return source->damage();
}

/// The file without its last `bytes` bytes.
Bytes shortened(const Bytes& file, std::size_t bytes) { return cutAt(file, file.size() - bytes); }

} // namespace

TEST(JPEGDamage, completeFilesOfEveryKindHaveNone) {
    for (const JPEGRecipe& recipe : {photo, progressive, restarting, JPEGRecipe{.isGrey = true}})
        for (const int halvings : {0, 1, 2, 3})
            EXPECT_FALSE(damageOf(makeJPEG(recipe), halvings)) << recipe.description();
}

TEST(JPEGDamage, aFileCutOffIsTruncatedAtEveryScale) {
    for (const JPEGRecipe& recipe : {photo, progressive, restarting})
        for (const int halvings : {0, 3}) {
            const auto damage = damageOf(shortened(makeJPEG(recipe), 300), halvings);
            ASSERT_TRUE(damage) << recipe.description();
            EXPECT_EQ(damage->reason, Reason::truncated);
            EXPECT_EQ(damage->text, "the JPEG file is cut off: a part of the picture is missing");
        }
}

TEST(JPEGDamage, aFileCutInItsLastBytesIsTruncated) {
    for (const JPEGRecipe& recipe : {photo, progressive})
        EXPECT_TRUE(damageOf(shortened(makeJPEG(recipe), 6))) << recipe.description();
}

TEST(JPEGDamage, aProgressiveFileCutBetweenItsScansIsTruncated) {
    const Bytes file = makeJPEG(progressive);
    for (std::size_t scan = markerPosition(file, 0xDA, scanPosition(file)); scan < file.size();
         scan = markerPosition(file, 0xDA, scan + 2))
        EXPECT_TRUE(damageOf(cutAt(file, scan))) << scan;
}

TEST(JPEGDamage, aMissingEndMarkerAfterAllPixelsIsNoDamage) {
    for (const JPEGRecipe& recipe : {photo, progressive, restarting})
        EXPECT_FALSE(damageOf(shortened(makeJPEG(recipe), 2))) << recipe.description();
}

TEST(JPEGDamage, bytesAfterTheEndAreNoDamage) {
    for (const JPEGRecipe& recipe : {photo, progressive}) {
        const Bytes file = makeJPEG(recipe);
        EXPECT_FALSE(damageOf(withInserted(file, file.size(), Bytes(5000, 0x5A)))) << recipe.description();
    }
}

TEST(JPEGDamage, aMarkerInTheMiddleOfTheScanIsMalformed) {
    const Bytes file = makeJPEG(photo);
    const std::size_t middle = (scanPosition(file) + file.size()) / 2;
    const auto damage = damageOf(withInserted(file, middle, {0xFF, 0xD9}));
    ASSERT_TRUE(damage);
    EXPECT_EQ(damage->reason, Reason::malformed);
    EXPECT_EQ(damage->text, "the JPEG picture is damaged: Corrupt JPEG data: premature end of data segment");
}

TEST(JPEGDamage, aRestartMarkerOutOfOrderIsMalformed) {
    const Bytes file = makeJPEG(restarting);
    EXPECT_TRUE(damageOf(withByte(file, markerPosition(file, 0xD2) + 1, 0xD5)));
}

TEST(JPEGDamage, bytesBeforeARestartMarkerAreDamageButNotBeforeAHeaderSegment) {
    const Bytes file = makeJPEG(restarting);
    EXPECT_TRUE(damageOf(withInserted(file, markerPosition(file, 0xD3), {1, 2, 3})));
    EXPECT_FALSE(damageOf(withInserted(file, markerPosition(file, 0xDB), {1, 2, 3})));
}

TEST(JPEGDamage, isTheSameWithoutOurOwnDecoder) {
    const Bytes whole = makeJPEG(photo), damaged = shortened(whole, 300);
    for (const Bytes& file : {whole, damaged}) {
        const auto decoder = *openDecoder(readerOfBytes(file), DecoderChoice::libraryOnly);
        EXPECT_TRUE(readAllRows(**decoder->rows(0, 0)).ok());
        EXPECT_EQ(decoder->damage().has_value(), file == damaged);
    }
}

TEST(JPEGDamage, isNotKnownBeforeTheDamagedRowsAreDecoded) {
    const auto source = *LocalSource::open(readerOfBytes(shortened(makeJPEG(photo), 300)));
    const RowSourcePointer rows = *source->rows(0, 0);
    Bytes row(rows->format().bytesPerRow());
    ASSERT_TRUE(rows->readRow(row).ok());
    EXPECT_FALSE(source->damage());
}

} // namespace kestrine::jpeg
