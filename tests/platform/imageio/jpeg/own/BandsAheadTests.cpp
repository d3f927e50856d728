#include "platform/imageio/jpeg/own/BandsAhead.h"

#include "platform/coregraphics/Crew.h"
#include "platform/coregraphics/PixelBuffer.h"
#include "tests/platform/imageio/jpeg/JPEGRecipe.h"
#include "tests/platform/imageio/jpeg/JPEGSurgery.h"
#include "tests/platform/imageio/jpeg/own/BothDecoders.h"

#include <atomic>
#include <random>

namespace kestrine::jpeg {

using testing::JPEGRecipe;
using testing::makeJPEG;
using testing::sameWithBoth;

namespace {

// Large enough for a crew. With 4:2:0, 44 MCUs across and 29 down.
constexpr unsigned width = 700, height = 450;

Bytes largeJPEG(unsigned restartInterval, const testing::SamplingFactors& sampling = testing::sampling420) {
    return makeJPEG(
        {.width = width, .height = height, .sampling = sampling, .restartInterval = restartInterval});
}

/// Counts the readings that begin at the start of the scan: one for each decoder.
class CountingReader final : public ByteReader {
public:
    explicit CountingReader(const Bytes& file)
        : bytes_(readerOfBytes(file)), scan_(testing::scanPosition(file)) {}

    std::uint64_t size() const override { return bytes_->size(); }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        if (offset == scan_)
            ++decoders;
        return bytes_->readAt(offset, into);
    }

    mutable std::atomic<int> decoders = 0;

private:
    const std::shared_ptr<const ByteReader> bytes_;
    const std::uint64_t scan_;
};

/// How many decoders share the file with three threads.
int decodersOf(const Bytes& file) {
    const auto reader = std::make_shared<CountingReader>(file);
    const CrewScope crew(std::make_shared<Crew>(3));
    const Result<RowSourcePointer> rows = testing::ownRows(reader, 8);
    EXPECT_TRUE(rows && readAllRows(**rows).ok());
    return reader->decoders;
}

/// What is reported of the file; empty if there is no damage.
std::string damageOf(const Bytes& file) {
    const auto decoder = openDecoder(readerOfBytes(file), DecoderChoice::ownFirst);
    const auto rows = (*decoder)->rows(0, 0);
    const bool isDecoded = rows && readAllRows(**rows);
    const std::optional<Failure> damage = (*decoder)->damage();
    return isDecoded && damage ? damage->text : "";
}

std::string damageWithoutCrew(const Bytes& file) {
    const CrewScope none(nullptr);
    return damageOf(file);
}

/// The file without the first restart marker that has this number.
Bytes withoutRestart(Bytes file, unsigned number) {
    for (auto place = file.begin() + static_cast<std::ptrdiff_t>(testing::scanPosition(file));; ++place)
        if (place[0] == 0xFF && place[1] == 0xD0 + number) {
            file.erase(place, place + 2);
            return file;
        }
}

} // namespace

TEST(BandsAhead, equalThoseOfTheLibraryForEveryIntervalOfRestartMarkers) {
    const CrewScope crew(std::make_shared<Crew>(3));
    for (const auto& sampling :
         {testing::sampling444, testing::sampling422, testing::sampling420, testing::sampling440})
        for (const unsigned interval : {0, 7, 11, 88, 176, 220, 60000})
            EXPECT_TRUE(sameWithBoth(largeJPEG(interval, sampling))) << interval;
    EXPECT_TRUE(
        sameWithBoth(makeJPEG({.width = width, .height = height, .isGrey = true, .restartInterval = 88})));
    EXPECT_TRUE(sameWithBoth(
        makeJPEG({.width = width, .height = height, .restartInterval = 44, .isProgressive = true})));
}

TEST(BandsAhead, equalThoseOfTheLibraryInReducedSizes) {
    const CrewScope crew(std::make_shared<Crew>(4));
    const Bytes file = makeJPEG({.width = 2100, .height = 2000, .restartInterval = 132});
    for (const int halvings : {1, 2})
        EXPECT_TRUE(sameWithBoth(file, halvings)) << halvings;
}

TEST(BandsAhead, areDecodedByAllThreadsIfRestartMarkersStandBetweenThem) {
    EXPECT_EQ(decodersOf(largeJPEG(44)), 3);
    EXPECT_EQ(decodersOf(largeJPEG(4)), 3);
    EXPECT_EQ(decodersOf(largeJPEG(176)), 3); // every fourth band
    EXPECT_EQ(decodersOf(largeJPEG(220)), 1); // every fifth
    EXPECT_EQ(decodersOf(largeJPEG(7)), 1);   // no marker is at the start of the first few bands
    EXPECT_EQ(decodersOf(largeJPEG(0)), 1);
}

TEST(BandsAhead, equalThoseOfTheLibraryAfterDamage) {
    const CrewScope crew(std::make_shared<Crew>(3));
    std::mt19937 random(17);
    for (const unsigned interval : {11U, 44U, 88U}) {
        const Bytes file = largeJPEG(interval);
        const std::size_t scan = testing::scanPosition(file);
        for (int repetition = 0; repetition < 24; ++repetition) {
            Bytes damaged = file;
            const std::size_t at = scan + random() % (file.size() - scan);
            if (repetition % 3 == 0)
                damaged.resize(at);
            else
                damaged[at] = repetition % 3 == 1 ? static_cast<std::uint8_t>(random()) : 0xFF;
            ASSERT_TRUE(sameWithBoth(damaged)) << interval << ", byte " << at;
            ASSERT_EQ(damageOf(damaged), damageWithoutCrew(damaged)) << interval << ", byte " << at;
        }
    }
}

TEST(BandsAhead, equalThoseOfTheLibraryWhenARestartMarkerIsMissingOrWrong) {
    const CrewScope crew(std::make_shared<Crew>(2));
    const Bytes file = largeJPEG(44);
    for (unsigned number = 0; number < 8; ++number)
        EXPECT_TRUE(sameWithBoth(withoutRestart(file, number))) << number;
    Bytes swapped = file;
    for (std::size_t i = testing::scanPosition(file); i + 1 < swapped.size(); ++i)
        if (swapped[i] == 0xFF && swapped[i + 1] == 0xD5)
            swapped[i + 1] = 0xD6;
    EXPECT_TRUE(sameWithBoth(swapped));
}

} // namespace kestrine::jpeg
