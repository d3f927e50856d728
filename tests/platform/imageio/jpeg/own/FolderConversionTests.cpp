// Whole conversions of a folder of pictures, sound ones and broken ones, with our own decoder and without.

#include "platform/imageio/jpeg/LibraryOnlyScope.h"
#include "platform/imageio/Render.h"
#include "tests/platform/imageio/jpeg/JPEGRecipe.h"
#include "tests/platform/imageio/jpeg/JPEGSurgery.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/SourceFolder.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace kestrine::jpeg {

namespace {

/// Files of all kinds that our decoder takes, one large enough for a thread that reads ahead, some cut; and
/// the pictures with which the fuzzers begin: progressive ones, CMYK, broken ones, some with EXIF.
void fill(const testing::TemporaryFolder& folder) {
    std::vector<testing::JPEGRecipe> recipes = testing::recipesForOurDecoder();
    recipes.push_back({.width = 900, .height = 700});
    std::reverse(recipes.begin(), recipes.end());
    constexpr std::size_t step = 7; // has no factor in common with how the recipes vary
    for (std::size_t i = 0; i < recipes.size(); i += step) {
        const Bytes file = testing::makeJPEG(recipes[i]);
        folder.write(std::to_string(i) + ".jpg", file);
        if (i % 5 == 0)
            folder.write(std::to_string(i) + "-cut.jpg", testing::cutAt(file, file.size() * 4 / 5));
    }
    for (const char* corpus : {"jpeg", "ownjpeg", "exiftagreader"})
        for (const auto& file :
             std::filesystem::directory_iterator(inSourceFolder("fuzz/corpus/") + std::string(corpus)))
            folder.write(corpus + file.path().filename().string(), testing::readFileBytes(file.path()));
}

/// A JPEG of the picture scaled to a `divisor`-th, or why there is none.
Result<Bytes> converted(const std::filesystem::path& path, std::uint32_t divisor) {
    const auto source = Source::open(readerOfBytes(testing::readFileBytes(path)));
    if (!source)
        return source.failure();
    const RowFormat format = (*source)->frames().front().format;
    const Resampling scaling = {AxisMap::filling(format.width, std::max(1U, format.width / divisor)),
                                AxisMap::filling(format.height, std::max(1U, format.height / divisor)),
                                ResampleFilter::lanczos, Light::linear};
    return render({*source, 0, {scaling}}, {FileType::jpeg, {.quality = 0.7}});
}

Result<Bytes> convertedByLibrary(const std::filesystem::path& path, std::uint32_t divisor) {
    const jpeg::LibraryOnlyScope scope;
    return converted(path, divisor);
}

} // namespace

TEST(JPEGConversion, ofAFolderGivesTheSameBytesWithOurOwnDecoderAndWithout) {
    const testing::TemporaryFolder folder;
    fill(folder);
    int equal = 0;
    for (const auto& file : std::filesystem::directory_iterator(folder.path()))
        for (const std::uint32_t divisor : {1, 5, 19}) {
            const Result<Bytes> ours = converted(file.path(), divisor),
                                theirs = convertedByLibrary(file.path(), divisor);
            ASSERT_EQ(ours.ok(), theirs.ok()) << file.path() << " to 1/" << divisor;
            if (!ours)
                continue;
            ASSERT_EQ(*ours, *theirs) << file.path() << " to 1/" << divisor;
            ++equal;
        }
    EXPECT_GT(equal, 300);
}

} // namespace kestrine::jpeg
