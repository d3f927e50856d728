#include "kestrinectl/convert/ConvertProgress.h"
#include "kestrinectl/text/ShownNumbers.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using std::chrono::milliseconds;

TEST(ShownNumbers, bytesHaveTwoOrThreeDigits) {
    EXPECT_EQ(shownBytes(1), "1 byte");
    EXPECT_EQ(shownBytes(999), "999 bytes");
    EXPECT_EQ(shownBytes(1000), "1.0 kB");
    EXPECT_EQ(shownBytes(9949), "9.9 kB");
    EXPECT_EQ(shownBytes(9951), "10 kB");
    EXPECT_EQ(shownBytes(999'499), "999 kB");
    EXPECT_EQ(shownBytes(999'500), "1.0 MB");
    EXPECT_EQ(shownBytes(3'140'000'000), "3.1 GB");
}

TEST(ShownNumbers, durationsHaveTheUnitsThatPeopleRead) {
    EXPECT_EQ(shownDuration(milliseconds(0)), "0 ms");
    EXPECT_EQ(shownDuration(milliseconds(999)), "999 ms");
    EXPECT_EQ(shownDuration(milliseconds(3210)), "3.2 s");
    EXPECT_EQ(shownDuration(milliseconds(59'400)), "59 s");
    EXPECT_EQ(shownDuration(milliseconds(59'600)), "1 min 0 s");
    EXPECT_EQ(shownDuration(milliseconds(7'500'000)), "2 h 5 min");
}

TEST(ConvertProgress, rateAndRemainingTimeFollowFromWhatIsDone) {
    EXPECT_EQ(progressText({.done = 0, .count = 3}), "0 of 3 files");
    EXPECT_EQ(progressText({.done = 2, .count = 10, .elapsed = milliseconds(100)}), "2 of 10 files");
    EXPECT_EQ(progressText({.done = 2, .count = 10, .elapsed = milliseconds(1000)}),
              "2 of 10 files, 2.0 per second, 4.0 s left");
}

TEST(ConvertProgress, remainingTimeIsEstimatedByBytes) {
    EXPECT_EQ(progressText({.done = 1,
                            .count = 2,
                            .bytesDone = 1000,
                            .bytes = 11'000,
                            .bytesBefore = 1000,
                            .bytesAfter = 200,
                            .elapsed = milliseconds(1000)}),
              "1 of 2 files, 1.0 per second, 1.0 kB -> 200 bytes, 10 s left");
}

TEST(ConvertProgress, fitsIntoALineOfATerminal) {
    EXPECT_LT(progressText({.done = 199'999,
                            .count = 999'999,
                            .bytesDone = 1,
                            .bytes = 99'000'000'000,
                            .bytesBefore = 999'000'000'000,
                            .bytesAfter = 888'000'000,
                            .elapsed = milliseconds(1000)})
                  .size(),
              100);
}

} // namespace
} // namespace kestrine
