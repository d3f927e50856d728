#include "platform/imageio/jpeg/own/BaselineRows.h"

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/jpeg/LibraryOnlyScope.h"
#include "platform/imageio/jpeg/LibraryRows.h"
#include "tests/platform/imageio/jpeg/JPEGRecipe.h"
#include "tests/platform/imageio/jpeg/JPEGSurgery.h"
#include "tests/support/Pictures.h"

#include <future>
#include <set>

namespace kestrine::jpeg {

using testing::JPEGRecipe;
using testing::makeJPEG;

namespace {

constexpr int scales[] = {8, 4, 2, 1};

Result<PixelBuffer> all(Result<RowSourcePointer> rows) {
    return rows ? readAllRows(**rows) : Result<PixelBuffer>(rows.failure());
}

/// Whether our rows are the library's at every scale.
::testing::AssertionResult equalsLibrary(const JPEGRecipe& recipe) {
    const auto reader = readerOfBytes(makeJPEG(recipe));
    const RowFormat format{recipe.width, recipe.height, recipe.isGrey ? ColorModel::gray : ColorModel::rgb};
    for (const int eighths : scales) {
        const Result<PixelBuffer> ours = all(jpeg::openBaselineRows(reader, eighths));
        const Result<PixelBuffer> theirs =
            all(jpeg::openLibraryRows(reader, format, eighths, std::make_shared<DamageRecord>()));
        if (!ours || !theirs)
            return ::testing::AssertionFailure() << (ours ? theirs : ours).failure().text;
        if (auto result = testing::samePicture(*ours, *theirs); !result)
            return result << " at " << eighths << "/8: " << recipe.description();
    }
    return ::testing::AssertionSuccess();
}

/// Notes from where it is read.
class WatchedReader final : public ByteReader {
public:
    explicit WatchedReader(Bytes bytes) : bytes_(readerOfBytes(std::move(bytes))) {}

    std::uint64_t size() const override { return bytes_->size(); }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        offsets.insert(offset);
        return bytes_->readAt(offset, into);
    }

    mutable std::set<std::uint64_t> offsets;

private:
    std::shared_ptr<const ByteReader> bytes_;
};

/// Whether the codec takes the scan by itself, which our decoder alone does.
bool readsWithOurDecoder(const Bytes& file) {
    const auto reader = std::make_shared<WatchedReader>(file);
    const auto decoder = *jpeg::codec.open(reader);
    EXPECT_TRUE(all(decoder->rows(0, 8)).ok());
    return reader->offsets.contains(testing::scanPosition(file));
}

} // namespace

TEST(JPEGRows, comeFromOurDecoderUnlessAScopeForbidsIt) {
    const Bytes file = makeJPEG({}), progressive = makeJPEG({.isProgressive = true});
    EXPECT_TRUE(readsWithOurDecoder(file));
    EXPECT_FALSE(readsWithOurDecoder(progressive));
    {
        const jpeg::LibraryOnlyScope scope;
        EXPECT_FALSE(readsWithOurDecoder(file));
    }
    EXPECT_TRUE(readsWithOurDecoder(file));
}

TEST(JPEGRows, letGoOfTheFileWithTheirEnd) {
    const auto reader = readerOfBytes(makeJPEG({}));
    EXPECT_TRUE(all(jpeg::openBaselineRows(reader, 8)).ok());
    EXPECT_EQ(reader.use_count(), 1);
}

TEST(JPEGRows, areTheSameFromManyThreadsAtOnce) {
    const Bytes file = makeJPEG({.width = 300, .height = 200});
    const PixelBuffer expected = *all(jpeg::openBaselineRows(readerOfBytes(file), 8));
    std::vector<std::future<bool>> threads;
    for (int i = 0; i < 24; ++i) // more than decoders that rest
        threads.push_back(std::async(std::launch::async, [&file, &expected] {
            for (int repetition = 0; repetition < 5; ++repetition) {
                const auto rows = all(jpeg::openBaselineRows(readerOfBytes(file), 8));
                if (!rows || rows->bytes != expected.bytes)
                    return false;
            }
            return true;
        }));
    for (auto& thread : threads)
        EXPECT_TRUE(thread.get());
}

TEST(JPEGRows, areTheLibrarysPixelsForEveryKindOfFileThatIsTaken) {
    for (const JPEGRecipe& recipe : testing::recipesForOurDecoder())
        EXPECT_TRUE(equalsLibrary(recipe));
}

} // namespace kestrine::jpeg
