#include "_MyClasses/Category/IsolatedDecoding.h"

#include "_MyClasses/Class/ExifTag/ExifOrientation.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/LocalSource.h"
#include "platform/imageio/Render.h"
#include "tests/support/Pictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <stop_token>
#include <thread>

namespace kestrine {
namespace {

const std::string helper = KESTRINE_WORKER_PROGRAM;

class IsolatedDecodingTest : public ::testing::Test {
protected:
    void SetUp() override {
        const auto pixels = std::make_shared<PixelBuffer>(
            testing::makePhoto({60, 40, ColorModel::rgb, false, SampleDepth::bits8}));
        path = folder.write("a.jpg", *encoded(jpeg::encode, *rowsOfPixels(pixels), {.quality = 0.9}));
    }

    /// Renders the picture. Returns whether this process decoded it, or nullopt if that failed.
    std::optional<bool> isDecodedHere() const {
        const std::uint64_t before = LocalSource::decodesStarted();
        const Result<std::shared_ptr<Source>> source = openPicture(path);
        if (!source || !render({*source, 0, {}}, {FileType::png, {}}))
            return std::nullopt;
        return LocalSource::decodesStarted() != before;
    }

    const testing::TemporaryFolder folder;
    std::string path;
};

TEST_F(IsolatedDecodingTest, ofAProgramWithThreadsHappensInItsHelper) {
    const std::jthread busy([](const std::stop_token& end) {
        while (!end.stop_requested())
            std::this_thread::yield();
    });
    EXPECT_EQ(isDecodedHere(), true);
    {
        const IsolatedDecoding isolated(Isolation::strict, 2, helper);
        EXPECT_EQ(isDecodedHere(), false);
        EXPECT_EQ(exifOrientation({NSString::fromUTF8(path)}), 0);
    }
    EXPECT_EQ(isDecodedHere(), true);
}

TEST_F(IsolatedDecodingTest, ofAProgramWithOneThreadHappensInItsCopies) {
    const IsolatedDecoding isolated(Isolation::strict, 1);
    EXPECT_EQ(isDecodedHere(), false);
}

TEST_F(IsolatedDecodingTest, withoutTheHelperHappensHereUnlessItIsStrict) {
    {
        const IsolatedDecoding isolated(Isolation::automatic, 1, folder / "missing");
        EXPECT_EQ(isDecodedHere(), true);
    }
    const IsolatedDecoding isolated(Isolation::strict, 1, folder / "missing");
    EXPECT_EQ(isDecodedHere(), std::nullopt);
}

TEST_F(IsolatedDecodingTest, goesOnInAnotherThreadAfterTheOneThatStartedItHasEnded) {
    std::optional<IsolatedDecoding> isolated;
    std::jthread([&] { isolated.emplace(Isolation::strict, 1, helper); }).join();
    EXPECT_EQ(isDecodedHere(), false);
    std::jthread([&] { EXPECT_EQ(isDecodedHere(), false); }).join();
    EXPECT_EQ(isDecodedHere(), false);
}

} // namespace
} // namespace kestrine
