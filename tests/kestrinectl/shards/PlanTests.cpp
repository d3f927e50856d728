#include "kestrinectl/shards/Plan.h"

#include "kestrinectl/CommandError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace kestrine {
namespace {

using ::testing::HasSubstr;
using ::testing::ThrowsMessage;

const PlanRecord first{"in/a.png", 12, 34, 56, {"out/a.jpg", ""}};
const PlanRecord second{"in/\xff \n.png", 0, -1, ~std::uint64_t{0}, {"out/b.jpg", "out/c.jpg"}};

std::string plan() { return textOf(PlanHeader{2, "{}"}) + textOf(first) + textOf(second) + endOfPlan(2); }

std::vector<PlanRecord> read(const std::string& text) {
    std::istringstream stream(text);
    PlanReader reader(stream, "plan");
    std::vector<PlanRecord> records;
    for (PlanRecord record; reader.next(record);)
        records.push_back(record);
    return records;
}

std::uint64_t digestOfPlan(const std::string& text) {
    std::istringstream stream(text);
    PlanReader reader(stream, "plan");
    for (PlanRecord record; reader.next(record);) {
    }
    return reader.digest();
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
    return text.replace(text.find(what), what.size(), by);
}

TEST(Plan, isReadAsItWasWritten) { EXPECT_EQ(read(plan()), (std::vector{first, second})); }

TEST(Plan, hasADigestThatEveryChangeChanges) {
    const std::uint64_t digest = digestOfPlan(plan());
    EXPECT_EQ(digestOfPlan(plan()), digest);
    for (const auto& [what, by] : {std::pair{"a.png", "b.png"}, {"12 34", "13 34"}, {"{}", "[]"}})
        EXPECT_NE(digestOfPlan(replaced(plan(), what, by)), digest) << what;
}

TEST(Plan, thatIsCutOffAnywhereIsRefused) {
    const std::string whole = plan();
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_THROW((void)read(whole.substr(0, length)), CommandError) << length;
}

TEST(Plan, ofAnotherVersionIsRefused) {
    EXPECT_THAT([] { (void)read(replaced(plan(), "plan 1", "plan 2")); },
                ThrowsMessage<CommandError>(HasSubstr("has the format 2, and this version")));
    EXPECT_THAT([] { (void)read("GIF89a and more bytes"); },
                ThrowsMessage<CommandError>(HasSubstr("is not a plan")));
}

TEST(Plan, withWrongNumbersIsRefused) {
    for (const char* numbers :
         {"12 34", "12 34 56 78", "12  34 56", " 12 34 56", "12 34 56 ", "-1 34 56", "x", "", "12 34 0x5",
          "18446744073709551616 34 56", "12 9223372036854775808 56"})
        EXPECT_THAT([&] { (void)read(replaced(plan(), "12 34 56", numbers)); },
                    ThrowsMessage<CommandError>(HasSubstr("the numbers of the source are wrong")))
            << numbers;
}

TEST(Plan, withTooManyResultsOrTooLongNamesIsRefused) {
    const std::string begin = textOf(PlanHeader{1, "{}"});
    EXPECT_THROW((void)read(textOf(PlanHeader{10'001, "{}"}) + endOfPlan(0)), CommandError);
    EXPECT_THROW((void)read(begin + std::string(4096, 'a')), CommandError);
    EXPECT_THROW((void)read(textOf(PlanHeader{1, std::string(2 << 20, ' ')})), CommandError);
}

TEST(Plan, withPathsOutsideTheRootIsRefused) {
    for (const char* path : {"/a", "..", "../a", "a/..", "a/../b", "./a", "a/.", "a//b", "a/"}) {
        EXPECT_FALSE(isBelowRoot(path)) << path;
        for (const char* what : {"in/a.png", "out/b.jpg"})
            EXPECT_THAT([&] { (void)read(replaced(plan(), what, path)); },
                        ThrowsMessage<CommandError>(HasSubstr("leads out of the root")))
                << path;
    }
}

TEST(Plan, mayHaveNamesThatOnlyLookDangerous) {
    for (const char* path : {"a", "...", "..a", "a..", "a/..b/c", ".hidden", "-r", "~", "a\nb", "\\..\\"})
        EXPECT_TRUE(isBelowRoot(path)) << path;
}

TEST(Plan, mustHaveAsManyFilesAsItsEndSays) {
    const std::string begin = textOf(PlanHeader{2, "{}"}) + textOf(first);
    EXPECT_EQ(read(begin + endOfPlan(1)).size(), 1U);
    EXPECT_THROW((void)read(begin + endOfPlan(2)), CommandError);
    EXPECT_THROW((void)read(begin + endOfPlan(1) + "x"), CommandError);
}

} // namespace
} // namespace kestrine
