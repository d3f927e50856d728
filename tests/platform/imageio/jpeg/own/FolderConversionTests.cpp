// Converts a folder of valid and damaged pictures with our own decoder and with libjpeg-turbo alone.

#include "platform/coregraphics/Resampler.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/jpeg/Decoder.h"
#include "tests/platform/imageio/jpeg/JPEGRecipe.h"
#include "tests/platform/imageio/jpeg/JPEGSurgery.h"
#include "tests/support/SourceFolder.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace kestrine::jpeg {

namespace {

/// Files of all kinds that our decoder supports, one of them large enough for a second thread, some of them
/// cut off; and the corpora of the fuzzers, which have progressive, CMYK and damaged files and some with
/// EXIF.
void fill(const testing::TemporaryFolder& folder) {
    std::vector<testing::JPEGRecipe> recipes = testing::recipesForOurDecoder();
    recipes.push_back({.width = 900, .height = 700});
    std::reverse(recipes.begin(), recipes.end());
    constexpr std::size_t step = 7; // has no common factor with the pattern of the recipes
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

struct Scale {
    std::uint32_t divisor;
    int halvings; ///< at which the picture is decoded
};

/// The picture at 1 / `scale.divisor` of its size, as a JPEG.
Result<Bytes> converted(const std::filesystem::path& path, DecoderChoice choice, const Scale& scale) {
    const CrewScope crew(std::make_shared<Crew>(2));
    const auto decoder = TRY(openDecoder(readerOfBytes(testing::readFileBytes(path)), choice));
    RowSourcePointer rows = rowsAhead(TRY(decoder->rows(0, scale.halvings)));
    const auto scaled = [&scale](std::uint32_t side, std::uint32_t decodedSide) {
        return AxisMap::filling(decodedSide, std::max(1U, side / scale.divisor));
    };
    const RowFormat full = decoder->frames().front().format, decoded = rows->format();
    const Resampling scaling = {scaled(full.width, decoded.width), scaled(full.height, decoded.height),
                                ResampleFilter::lanczos, Light::linear};
    return encoded(encode, *resampledRows(std::move(rows), scaling, nullptr, SampleDepth::bits8),
                   {.quality = 0.7});
}

} // namespace

TEST(FolderConversion, givesTheSameBytesWithOurOwnDecoderAndWithTheLibraryAlone) {
    const testing::TemporaryFolder folder;
    fill(folder);
    int equal = 0;
    for (const auto& file : std::filesystem::directory_iterator(folder.path()))
        for (const Scale& scale : {Scale{1, 0}, {5, 1}, {19, 3}}) {
            const Result<Bytes> ours = converted(file.path(), DecoderChoice::ownFirst, scale),
                                theirs = converted(file.path(), DecoderChoice::libraryOnly, scale);
            ASSERT_EQ(ours.ok(), theirs.ok()) << file.path() << " to 1/" << scale.divisor;
            if (!ours)
                continue;
            ASSERT_EQ(*ours, *theirs) << file.path() << " to 1/" << scale.divisor;
            ++equal;
        }
    EXPECT_GT(equal, 300);
}

} // namespace kestrine::jpeg
