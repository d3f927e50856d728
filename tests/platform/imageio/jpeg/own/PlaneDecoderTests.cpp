#include "platform/imageio/jpeg/own/PlaneDecoder.h"

#include "tests/platform/imageio/jpeg/JPEGRecipe.h"
#include "tests/platform/imageio/jpeg/own/BothDecoders.h"
#include "tests/platform/imageio/jpeg/own/LibraryPlanes.h"

#include <cstring>
#include <gtest/gtest.h>

namespace kestrine::jpeg {

using jpeg::PlaneDecoder;
using testing::JPEGRecipe;

namespace {

using testing::LibraryPlane;

constexpr int scales[] = {8, 4, 2, 1};

/// Whether the decoder gives the planes, band after band.
::testing::AssertionResult givesPlanes(PlaneDecoder& decoder, std::uint32_t bands,
                                       const std::vector<LibraryPlane>& expected) {
    SampleBand samples;
    decoder.prepare(samples);
    if (samples.planes().size() != expected.size())
        return ::testing::AssertionFailure() << samples.planes().size() << " planes";
    for (std::uint32_t band = 0; band < bands; ++band) {
        if (const Result<void> decoded = decoder.decodeBand(samples); !decoded)
            return ::testing::AssertionFailure() << "band " << band << ": " << decoded.failure().text;
        for (std::size_t c = 0; c < expected.size(); ++c) {
            const jpeg::Plane& plane = samples.storage[c];
            if (plane.geometry().width != expected[c].width || plane.geometry().height != expected[c].height)
                return ::testing::AssertionFailure() << "plane " << c << " has another size";
            for (std::uint32_t i = 0; i < plane.rowsPerBand(); ++i) {
                const std::uint32_t y = band * plane.rowsPerBand() + i;
                if (y < expected[c].height
                    && std::memcmp(plane.row(i), expected[c].rows[y].data(), expected[c].width) != 0)
                    return ::testing::AssertionFailure() << "plane " << c << " differs in row " << y;
            }
        }
    }
    return ::testing::AssertionSuccess();
}

/// Whether our planes equal those of the library at every scale, with one decoder that is started several
/// times.
::testing::AssertionResult equalsLibrary(const JPEGRecipe& recipe) {
    const Bytes file = makeJPEG(recipe);
    const auto reader = readerOfBytes(file);
    const Result<FrameHeader> header = testing::ownHeader(reader);
    if (!header)
        return ::testing::AssertionFailure() << recipe.description() << ": " << header.failure().text;
    PlaneDecoder decoder;
    for (const int eighths : scales) {
        if (const Result<void> started = decoder.start(reader, *header, eighths); !started)
            return ::testing::AssertionFailure() << recipe.description() << ": " << started.failure().text;
        if (auto result = givesPlanes(decoder, header->mcusDown(), testing::libraryPlanes(file, eighths));
            !result)
            return result << " at " << eighths << "/8: " << recipe.description();
    }
    return ::testing::AssertionSuccess();
}

} // namespace

TEST(PlaneDecoder, givesTheSamplesOfTheLibraryForEveryKindOfSupportedFile) {
    for (const JPEGRecipe& recipe : testing::recipesForOurDecoder())
        EXPECT_TRUE(equalsLibrary(recipe));
}

TEST(PlaneDecoder, givesTheSamplesOfTheLibraryForEveryKindOfSupportedProgressiveFile) {
    for (const JPEGRecipe& recipe : testing::progressiveRecipesForOurDecoder())
        EXPECT_TRUE(equalsLibrary(recipe));
}

} // namespace kestrine::jpeg
