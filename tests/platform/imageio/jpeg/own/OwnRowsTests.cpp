#include "platform/imageio/jpeg/own/OwnRows.h"

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/jpeg/Decoder.h"
#include "platform/imageio/jpeg/LibraryRows.h"
#include "tests/platform/imageio/jpeg/JPEGRecipe.h"
#include "tests/platform/imageio/jpeg/JPEGSurgery.h"
#include "tests/platform/imageio/jpeg/own/BothDecoders.h"
#include "tests/support/Pictures.h"

#include <future>
#include <set>

namespace kestrine::jpeg {

using testing::JPEGRecipe;
using testing::makeJPEG;
using testing::ownRows;

namespace {

constexpr int scales[] = {8, 4, 2, 1};

Result<PixelBuffer> all(Result<RowSourcePointer> rows) {
    return rows ? readAllRows(**rows) : Result<PixelBuffer>(rows.failure());
}

/// Whether our rows equal those of the library at every scale.
::testing::AssertionResult equalsLibrary(const JPEGRecipe& recipe) {
    const auto reader = readerOfBytes(makeJPEG(recipe));
    const RowFormat format{recipe.width, recipe.height, recipe.isGrey ? ColorModel::gray : ColorModel::rgb};
    for (const int eighths : scales) {
        const Result<PixelBuffer> ours = all(ownRows(reader, eighths));
        const Result<PixelBuffer> theirs =
            all(jpeg::openLibraryRows(reader, format, eighths, std::make_shared<DamageRecord>()));
        if (!ours || !theirs)
            return ::testing::AssertionFailure() << (ours ? theirs : ours).failure().text;
        if (auto result = testing::samePicture(*ours, *theirs); !result)
            return result << " at " << eighths << "/8: " << recipe.description();
    }
    return ::testing::AssertionSuccess();
}

/// Records the offsets at which it is read.
class RecordingReader final : public ByteReader {
public:
    explicit RecordingReader(Bytes bytes) : bytes_(readerOfBytes(std::move(bytes))) {}

    std::uint64_t size() const override { return bytes_->size(); }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        offsets.insert(offset);
        return bytes_->readAt(offset, into);
    }

    mutable std::set<std::uint64_t> offsets;

private:
    std::shared_ptr<const ByteReader> bytes_;
};

/// Only our own decoder begins to read at the start of the scan.
bool readsWithOurDecoder(const Bytes& file, DecoderChoice choice) {
    const auto reader = std::make_shared<RecordingReader>(file);
    const auto decoder = *openDecoder(reader, choice);
    EXPECT_TRUE(all(decoder->rows(0, 0)).ok());
    return reader->offsets.contains(testing::scanPosition(file));
}

} // namespace

TEST(OwnRows, areReadFirstUnlessOnlyTheLibraryMayDecode) {
    const Bytes baseline = makeJPEG({}), progressive = makeJPEG({.isProgressive = true});
    EXPECT_TRUE(readsWithOurDecoder(baseline, DecoderChoice::ownFirst));
    EXPECT_TRUE(readsWithOurDecoder(progressive, DecoderChoice::ownFirst));
    EXPECT_FALSE(readsWithOurDecoder(baseline, DecoderChoice::libraryOnly));
    EXPECT_FALSE(readsWithOurDecoder(progressive, DecoderChoice::libraryOnly));
}

TEST(OwnRows, areReadWithoutTheHeaderEachTime) {
    const Bytes file = makeJPEG({});
    const auto reader = std::make_shared<RecordingReader>(file);
    const auto decoder = *openDecoder(reader, DecoderChoice::ownFirst);
    reader->offsets.clear();
    for (int reading = 0; reading < 2; ++reading)
        EXPECT_TRUE(all(decoder->rows(0, 0)).ok());
    EXPECT_EQ(*reader->offsets.begin(), testing::scanPosition(file));
}

TEST(OwnRows, releaseTheFileWhenTheyAreDestroyed) {
    const auto reader = readerOfBytes(makeJPEG({}));
    EXPECT_TRUE(all(ownRows(reader, 8)).ok());
    EXPECT_EQ(reader.use_count(), 1);
}

TEST(OwnRows, areTheSameOnManyThreadsAtOnce) {
    const Bytes file = makeJPEG({.width = 300, .height = 200});
    const PixelBuffer expected = *all(ownRows(readerOfBytes(file), 8));
    std::vector<std::future<bool>> threads;
    for (int i = 0; i < 24; ++i) // more than the number of idle decoders that are kept
        threads.push_back(std::async(std::launch::async, [&file, &expected] {
            for (int repetition = 0; repetition < 5; ++repetition) {
                const auto rows = all(ownRows(readerOfBytes(file), 8));
                if (!rows || rows->bytes != expected.bytes)
                    return false;
            }
            return true;
        }));
    for (auto& thread : threads)
        EXPECT_TRUE(thread.get());
}

TEST(OwnRows, equalTheLibrarysForEveryKindOfSupportedFile) {
    for (const JPEGRecipe& recipe : testing::recipesForOurDecoder())
        EXPECT_TRUE(equalsLibrary(recipe));
}

TEST(OwnRows, equalTheLibrarysForEveryKindOfSupportedProgressiveFile) {
    for (const JPEGRecipe& recipe : testing::progressiveRecipesForOurDecoder())
        EXPECT_TRUE(equalsLibrary(recipe));
}

} // namespace kestrine::jpeg
