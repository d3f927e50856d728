#include "kestrinectl/shards/NameGroups.h"
#include "kestrinectl/shards/Shard.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace kestrine {
namespace {

/// A source and its results.
using File = std::pair<std::string, std::vector<std::string>>;

/// The groups of these files in this order, by source.
std::map<std::string, std::uint64_t> groupsOf(const std::vector<File>& files) {
    NameGroups groups;
    for (const auto& [source, results] : files)
        groups.add(source, results);
    std::map<std::string, std::uint64_t> bySource;
    for (std::size_t i = 0; i < files.size(); ++i)
        bySource[files[i].first] = groups.groupOf(i);
    return bySource;
}

TEST(Shard, isReadFromItsTwoNumbers) {
    EXPECT_EQ(shardIn("3/16"), (Shard{3, 16}));
    EXPECT_EQ(shardIn("1/1"), (Shard{1, 1}));
    for (const char* word : {"", "/", "3", "3/", "/3", "0/3", "4/3", "-1/3", "1/3/3", "1/3 ", " 1/3", "+1/3",
                             "1/10000001", "1/99999999999", "a/b"})
        EXPECT_EQ(shardIn(word), std::nullopt) << word;
}

TEST(Shard, hasALogBesideThePlanThatIsFoundByItsName) {
    EXPECT_EQ(defaultLog("a/plan", {3, 16}), "a/plan.3-of-16.jsonl");
    EXPECT_TRUE(isDefaultLog("plan", "plan.3-of-16.jsonl"));
    for (const char* name : {"", "plan", "plan.", "plan.jsonl", "plan.-of-.jsonl", "plan.b.3-of-16.jsonl",
                             "plan.3-of-16.json", "plan.17-of-16.jsonl", "plan.03-of-16.jsonl",
                             "plan.3-of-16-of-16.jsonl", "plan.3/16.jsonl", "plan.3-of-16.jsonl.jsonl"})
        EXPECT_FALSE(isDefaultLog("plan", name)) << name;
}

TEST(Shard, ofAGroupNeverChangesBetweenVersions) {
    EXPECT_EQ(shardOf(0, 16), 1U);
    EXPECT_EQ(shardOf(1, 16), 6U);
    EXPECT_EQ(shardOf(2902062448522650749U, 3), 2U);
    EXPECT_EQ(shardOf(~std::uint64_t{0}, 1000), 68U);
}

TEST(Shard, everyGroupIsInExactlyOneOfThem) {
    for (std::uint64_t group = 0; group < 1000; ++group) {
        int holders = 0;
        for (std::uint32_t number = 1; number <= 7; ++number)
            holders += Shard{number, 7}.holds(group) ? 1 : 0;
        EXPECT_EQ(holders, 1) << group;
    }
}

TEST(Shard, theySpreadNamesEvenly) {
    std::map<std::uint32_t, int> sizes;
    for (int i = 0; i < 16'000; ++i)
        ++sizes[shardOf(keyOfName("out/IMG_" + std::to_string(i) + ".jpg"), 16)];
    for (const auto& [shard, size] : sizes)
        EXPECT_NEAR(size, 1000, 150) << shard;
}

TEST(NameGroups, doNotTellApartWhatSomeFileSystemsConfuse) {
    for (const auto& [one, other] : {std::pair{"out/a.jpg", "OUT/A.JPG"},
                                     {"Straße", "STRASSE"},
                                     {"é", "e\u0301"},
                                     {"É", "e\u0301"},
                                     {"ſ", "s"}})
        EXPECT_EQ(keyOfName(one), keyOfName(other)) << one;
    for (const auto& [one, other] : {std::pair{"a.jpg", "b.jpg"}, {"é", "e"}, {"\xff", "\xfe"}, {"a_1", "a"}})
        EXPECT_NE(keyOfName(one), keyOfName(other)) << one;
}

TEST(NameGroups, joinFilesThatShareANameDirectlyOrThroughOthers) {
    const auto groups =
        groupsOf({{"a", {"1", "2"}}, {"b", {"3"}}, {"c", {"4", "5"}}, {"d", {"B", "3"}}, {"e", {"2", "4"}}});
    EXPECT_EQ(groups.at("a"), groups.at("e"));
    EXPECT_EQ(groups.at("c"), groups.at("e"));
    EXPECT_EQ(groups.at("b"), groups.at("d"));
    EXPECT_NE(groups.at("a"), groups.at("b"));
}

TEST(NameGroups, dependNeitherOnTheOrderNorOnOtherFiles) {
    std::vector<File> files = {
        {"a", {"1", "2"}}, {"b", {"3"}}, {"c", {"4", "5"}}, {"e", {"2", "4"}}, {"f", {"", ""}}};
    const auto groups = groupsOf(files);
    do
        EXPECT_EQ(groupsOf(files), groups);
    while (std::ranges::next_permutation(files).found);
    files.push_back({"x", {"y"}});
    const auto more = groupsOf(files);
    for (const auto& [source, group] : groups)
        EXPECT_EQ(more.at(source), group) << source;
}

TEST(NameGroups, sayWhetherThereAreSimilarNames) {
    NameGroups different, similar;
    different.add("a", {"a.jpg", "b.jpg"});
    different.add("b", {"c.jpg", ""});
    EXPECT_FALSE(different.hasSimilarNames());
    similar.add("a", {"a.jpg", ""});
    similar.add("b", {"A.jpg", ""});
    EXPECT_TRUE(similar.hasSimilarNames());
}

} // namespace
} // namespace kestrine
