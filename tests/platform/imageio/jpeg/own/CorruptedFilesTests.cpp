// Thousands of corrupted files: our own decoder with the library as fallback gives the result of the library
// alone. For more and other files: --gtest_repeat=100 --gtest_shuffle.

#include "tests/platform/imageio/jpeg/JPEGRecipe.h"
#include "tests/platform/imageio/jpeg/JPEGSurgery.h"
#include "tests/platform/imageio/jpeg/own/BothDecoders.h"
#include "tests/support/SystemFeatures.h"

#include <array>
#include <functional>
#include <map>
#include <random>

namespace kestrine::jpeg {

using testing::Codes;
using testing::Content;
using testing::Outcome;

namespace {

constexpr int corruptions = 4000;

std::vector<Bytes> validFiles() {
    std::vector<Bytes> files;
    for (const auto& sampling : {testing::sampling444, testing::sampling422, testing::sampling420,
                                 testing::sampling440, testing::sampling411, testing::sampling410})
        for (const unsigned interval : {0, 3})
            files.push_back(testing::makeJPEG(
                {.width = 75, .height = 61, .sampling = sampling, .restartInterval = interval}));
    for (const Codes codes : {Codes::optimised, Codes::longest})
        files.push_back(testing::makeJPEG(
            {.width = 60, .height = 60, .quality = 40, .content = Content::noise, .codes = codes}));
    files.push_back(testing::makeJPEG({.width = 90, .height = 40, .isGrey = true, .restartInterval = 5}));
    files.push_back(testing::makeJPEG({.quality = 5, .hasWideQuantisers = true}));
    return files;
}

std::vector<Bytes> validProgressiveFiles() {
    std::vector<Bytes> files;
    for (const auto& sampling : {testing::sampling444, testing::sampling422, testing::sampling420})
        for (const unsigned interval : {0, 3})
            files.push_back(testing::makeJPEG({.width = 75,
                                               .height = 61,
                                               .sampling = sampling,
                                               .restartInterval = interval,
                                               .isProgressive = true}));
    for (const auto& script : testing::progressiveScripts())
        for (const Content content : {Content::photo, Content::noise})
            files.push_back(testing::makeJPEG(
                {.width = 60, .height = 50, .content = content, .isProgressive = true, .script = script}));
    files.push_back(testing::makeJPEG(
        {.width = 90, .height = 40, .isGrey = true, .restartInterval = 5, .isProgressive = true}));
    return files;
}

/// A random byte, or one that has a meaning in JPEG files.
std::uint8_t damagedByte(std::mt19937& random) {
    constexpr std::array<std::uint8_t, 8> special = {0xFF, 0x00, 0xD0, 0xD3, 0xD9, 0xDA, 0x7F, 0xFE};
    return random() % 2 == 0 ? special[random() % special.size()] : static_cast<std::uint8_t>(random());
}

/// `scan` is the offset of the scan. Only a third of the changes affects the headers before it, because
/// changed headers are often refused.
Bytes damage(Bytes file, std::size_t scan, std::mt19937& random) {
    const bool isInHeader = random() % 3 == 0 || scan >= file.size();
    const std::size_t at =
        isInHeader ? random() % std::min(scan, file.size()) : scan + random() % (file.size() - scan);
    const auto place = file.begin() + static_cast<std::ptrdiff_t>(at);
    const auto run = static_cast<std::ptrdiff_t>(std::min<std::size_t>(1 + random() % 40, file.size() - at));
    switch (random() % 7) {
    case 0:
        *place = static_cast<std::uint8_t>(*place ^ 1U << random() % 8);
        break;
    case 1:
        *place = damagedByte(random);
        break;
    case 2:
        file.resize(at);
        break;
    case 3:
        file.insert(place, damagedByte(random));
        break;
    case 4:
        file.erase(place, place + run);
        break;
    case 5:
        std::generate_n(place, run, [&random] { return damagedByte(random); });
        break;
    default:
        file = testing::withInserted(file, at, {0xFF, damagedByte(random)});
    }
    return file;
}

/// Corrupts files and compares both decoders. `fewest` is the number of files that our decoder must have
/// decoded, and the number at which it must have given up after it accepted the header: the comparison means
/// nothing if it accepts too few.
void compareCorrupted(const std::vector<Bytes>& files, unsigned seed, int fewest,
                      const std::function<void(const Bytes&, int)>& compare) {
    if (!testing::libraryOverflowsAsOnX86)
        GTEST_SKIP() << "sums that do not fit give other samples in this processor's libjpeg-turbo";
    std::mt19937 random(seed + static_cast<unsigned>(::testing::UnitTest::GetInstance()->random_seed()));
    std::map<Outcome, int> outcomes;
    for (int i = 0; i < corruptions; ++i) {
        const Bytes& valid = files[random() % files.size()];
        const std::size_t scan = testing::scanPosition(valid);
        Bytes file = damage(valid, scan, random);
        if (random() % 4 == 0 && !file.empty())
            file = damage(std::move(file), scan, random);
        const int halvings = random() % 4;
        SCOPED_TRACE("corruption " + std::to_string(i) + ", " + std::to_string(halvings) + " halvings");
        compare(file, halvings);
        if (::testing::Test::HasFatalFailure())
            return;
        ++outcomes[testing::outcomeOf(file)];
    }
    EXPECT_GT(outcomes[Outcome::decoded], fewest);
    EXPECT_GT(outcomes[Outcome::failed], fewest);
    ::testing::Test::RecordProperty("decoded", outcomes[Outcome::decoded]);
    ::testing::Test::RecordProperty("failed", outcomes[Outcome::failed]);
}

} // namespace

TEST(CorruptedJPEG, givesTheRowsOfTheLibrary) {
    compareCorrupted(validFiles(), 20, corruptions / 10, [](const Bytes& file, int halvings) {
        ASSERT_TRUE(testing::sameWithBoth(file, halvings));
    });
}

TEST(CorruptedJPEG, givesTheRowsAndTheDamageOfTheLibraryIfProgressive) {
    compareCorrupted(validProgressiveFiles(), 21, corruptions / 10, [](const Bytes& file, int halvings) {
        ASSERT_TRUE(testing::sameWithBoth(file, halvings));
        ASSERT_TRUE(testing::sameDamageWithBoth(file, halvings));
    });
}

} // namespace kestrine::jpeg
