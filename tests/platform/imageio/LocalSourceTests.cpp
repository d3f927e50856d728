#include "platform/imageio/LocalSource.h"

#include "platform/imageio/Render.h"
#include "tests/support/Pictures.h"
#include "tests/support/SourceFolder.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <filesystem>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

/// A file of which only the first bytes can be read.
class HalfReadableFile final : public ByteReader {
public:
    HalfReadableFile(Bytes bytes, std::size_t readable)
        : size_(bytes.size()), readable_((bytes.resize(readable), readerOfBytes(std::move(bytes)))) {}

    std::uint64_t size() const override { return size_; }

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        const std::size_t count = readable_->readAt(offset, into);
        if (count < into.size() && offset + count < size_)
            hasFailed_ = true;
        return count;
    }

    std::optional<Failure> failure() const override {
        return hasFailed_ ? std::optional(Failure{Reason::inputOutput, "a broken disk"}) : std::nullopt;
    }

private:
    const std::uint64_t size_;
    const std::shared_ptr<const ByteReader> readable_;
    mutable std::atomic<bool> hasFailed_ = false;
};

/// Expects the error of the system instead of any result, if there was one.
void expectNoResultOf(const std::shared_ptr<const HalfReadableFile>& file) {
    const Result<std::shared_ptr<LocalSource>> source = LocalSource::open(file);
    const Result<Bytes> result =
        source ? render({*source, 0, {}}, {FileType::png, {}}) : Result<Bytes>(source.failure());
    const Result<PixelBuffer> pixels =
        source ? readPixels({*source, 0, {}}) : Result<PixelBuffer>(source.failure());
    if (!file->failure())
        return; // the missing part is not needed
    ASSERT_FALSE(result);
    EXPECT_EQ(result.failure().text, "a broken disk");
    ASSERT_FALSE(pixels);
    EXPECT_EQ(pixels.failure().text, "a broken disk");
    EXPECT_FALSE(source && (*source)->damage());
}

using LocalSources = ::testing::TestWithParam<std::string>;

TEST_P(LocalSources, areNotTakenForDamagedWhenTheSystemCannotReadThem) {
    std::size_t failures = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(inSourceFolder("fuzz/corpus/" + GetParam()))) {
        SCOPED_TRACE(entry.path().string());
        const Bytes bytes = testing::readFileBytes(entry.path());
        for (const std::size_t readable : {std::size_t{0}, bytes.size() / 2, bytes.size() * 9 / 10}) {
            const auto file = std::make_shared<const HalfReadableFile>(bytes, readable);
            expectNoResultOf(file);
            failures += file->failure() ? 1 : 0;
        }
    }
    EXPECT_GT(failures, 3u);
}

INSTANTIATE_TEST_SUITE_P(Formats, LocalSources,
                         ::testing::Values("jpeg", "png", "gif", "tiff", "webp", "heif", "bmp", "pnm", "jxl",
                                           "jp2", "psd", "tga", "ico", "icns", "pcx", "qoi", "sgi", "raw",
                                           "svg"));

} // namespace
} // namespace kestrine
