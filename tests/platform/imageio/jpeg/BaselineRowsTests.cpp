#include "platform/imageio/jpeg/BaselineRows.h"

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/JPEGLibraryRows.h"
#include "tests/platform/imageio/jpeg/JPEGRecipe.h"
#include "tests/support/Pictures.h"

namespace kestrine {

using testing::JPEGRecipe;

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
        const Result<PixelBuffer> theirs = all(openJPEGLibraryRows(reader, format, eighths));
        if (!ours || !theirs)
            return ::testing::AssertionFailure() << (ours ? theirs : ours).failure().text;
        if (auto result = testing::samePicture(*ours, *theirs); !result)
            return result << " at " << eighths << "/8: " << recipe.description();
    }
    return ::testing::AssertionSuccess();
}

} // namespace

TEST(JPEGRows, areTheLibrarysPixelsForEveryKindOfFileThatIsTaken) {
    for (const JPEGRecipe& recipe : testing::recipesForOurDecoder())
        EXPECT_TRUE(equalsLibrary(recipe));
}

} // namespace kestrine
