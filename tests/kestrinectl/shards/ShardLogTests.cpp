#include "kestrinectl/shards/ShardLog.h"

#include "kestrinectl/CommandError.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kestrine {
namespace {

ConvertResult madeOf(const std::string& source) {
    const MadeContent content{8, 9};
    return {.source = source,
            .outputs = {{.path = "out/\xff.jpg", .width = 1, .height = 1, .bytes = 7, .content = content}}};
}

ConvertResult failureOf(const std::string& source) {
    ConvertResult result{.source = source};
    result.complain("it is damaged", "damaged");
    return result;
}

TEST(LogLine, saysWhatCameOfAFile) {
    const auto file = readLogLine(toJSON(madeOf("in/\xfe.png"), 5).dump()).file;
    ASSERT_TRUE(file);
    EXPECT_EQ(file->record, 5U);
    EXPECT_EQ(file->source, "in/\xfe.png");
    EXPECT_TRUE(file->isDone);
    ASSERT_EQ(file->results.size(), 1U);
    EXPECT_EQ(file->results[0].path, "out/\xff.jpg");
    EXPECT_EQ(file->results[0].bytes, 7U);
    EXPECT_EQ(file->results[0].content.digest, 8U);
    EXPECT_EQ(file->results[0].content.modified, 9);
}

TEST(LogLine, ofAFailureHasItsReason) {
    const auto file = readLogLine(toJSON(failureOf("a"), 0).dump()).file;
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->isDone);
    EXPECT_EQ(file->reason, "it is damaged");
}

TEST(LogLine, thatIsCutOffOrSomethingElseSaysNothing) {
    const std::string line = toJSON(madeOf("a"), 5).dump();
    for (std::size_t length = 0; length < line.size(); ++length)
        EXPECT_FALSE(readLogLine(line.substr(0, length)).file) << length;
    for (const char* other :
         {"", "null", "[]", "{}", "{\"record\":1}", "{\"record\":-1}", "{\"log\":{}}", "{\"run\":{}}"}) {
        EXPECT_FALSE(readLogLine(other).file) << other;
        EXPECT_FALSE(readLogLine(other).plan) << other;
    }
}

struct Log : ::testing::Test {
    testing::TemporaryFolder folder;
    std::string path = folder / "log";

    ShardLog open(std::uint64_t plan = 1) const { return ShardLog(path, plan, {1, 1}, WhenBusy::fails); }
    void add(const std::vector<std::pair<ConvertResult, std::uint64_t>>& results) const {
        ShardLog log = open();
        for (const auto& [result, record] : results)
            ASSERT_TRUE(log.add(toJSON(result, record)));
    }
};

TEST_F(Log, remembersTheLastWordAboutEachFile) {
    add({{failureOf("a"), 0}, {madeOf("a"), 0}, {failureOf("b"), 3}});
    const ShardLog log = open();
    ASSERT_NE(log.find(0), nullptr);
    EXPECT_TRUE(log.find(0)->isDone);
    ASSERT_NE(log.find(3), nullptr);
    EXPECT_FALSE(log.find(3)->isDone);
    EXPECT_EQ(log.find(1), nullptr);
}

TEST_F(Log, stillKnowsTheResultsOfAFileThatFailedLater) {
    add({{madeOf("a"), 0}, {failureOf("a"), 0}});
    const ShardLog log = open();
    ASSERT_NE(log.find(0), nullptr);
    EXPECT_FALSE(log.find(0)->isDone);
    EXPECT_EQ(log.find(0)->results.size(), 1U);
}

TEST_F(Log, ofAnotherPlanIsRefused) {
    add({});
    EXPECT_NO_THROW((void)open(1));
    EXPECT_THROW((void)open(2), CommandError);
}

TEST_F(Log, thatIsAnotherFileIsRefused) {
    std::ofstream(path) << "a text\n";
    EXPECT_THROW((void)open(), CommandError);
}

TEST_F(Log, inUseIsRefusedUnlessTheRunMayWait) {
    const ShardLog log = open();
    EXPECT_THROW((void)open(), CommandError);
}

} // namespace
} // namespace kestrine
