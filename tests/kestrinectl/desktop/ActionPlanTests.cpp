#include "kestrinectl/desktop/ActionPlan.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using ::testing::ElementsAre;
using testing::TemporaryFolder;

ActionPlan planned(const TemporaryFolder& folder, const std::vector<ActionFile>& wanted, bool overwrites) {
    return *planOfFiles(folder.path(), wanted, false, overwrites);
}

std::vector<std::string> changedPaths(const ActionPlan& plan) {
    std::vector<std::string> paths;
    for (const FileChange& change : plan.changes)
        paths.push_back((change.content ? "" : "-") + change.path);
    return paths;
}

TEST(MarkedContent, hasTheMarkInItsSecondLine) {
    const std::string content = markedContent("#!/bin/sh\nexec x\n");
    EXPECT_TRUE(content.starts_with("#!/bin/sh\n# Made by 'kestrinectl desktop install'"));
    EXPECT_TRUE(content.ends_with("\nexec x\n"));
}

TEST(MarkedContent, differsForOtherContent) { EXPECT_NE(markedContent("a\nb\n"), markedContent("a\nc\n")); }

TEST(ActionPlan, actionsAreAddedUpdatedAndRemoved) {
    const TemporaryFolder folder;
    folder.write("kept", markedContent("same\n"));
    folder.write("changed", markedContent("old\n"));
    folder.write("gone", markedContent("old\n"));
    const ActionPlan plan =
        planned(folder, {{"new", "new\n"}, {"kept", "same\n"}, {"changed", "new\n"}}, false);
    EXPECT_EQ(plan.installed, 3U);
    EXPECT_EQ(plan.installedAfter, 3U);
    EXPECT_THAT(changedPaths(plan), ElementsAre(folder / "new", folder / "changed", "-" + (folder / "gone")));
    EXPECT_TRUE(plan.isComplete());
}

TEST(ActionPlan, aFileOfOthersStaysAndItsActionIsNotCounted) {
    const TemporaryFolder folder;
    folder.write("Web", "mine\n");
    folder.write("Own", "mine\n");
    for (const bool overwrites : {false, true}) {
        const ActionPlan plan = planned(folder, {{"Web", "new\n"}, {"Mail", "new\n"}}, overwrites);
        EXPECT_EQ(plan.installed, 0U);
        EXPECT_EQ(plan.installedAfter, 1U);
        EXPECT_THAT(plan.foreign, ElementsAre(folder / "Web is not an action of kestrinectl; move it away"));
        EXPECT_THAT(changedPaths(plan), ElementsAre(folder / "Mail"));
        EXPECT_FALSE(plan.isComplete());
    }
}

TEST(ActionPlan, editedActionsStayAndAreCountedUnlessTheyMayBeOverwritten) {
    const TemporaryFolder folder;
    folder.write("Web", markedContent("a\n") + "edited\n");
    folder.write("gone", markedContent("a\n") + "edited\n");
    const ActionPlan plan = planned(folder, {{"Web", "a\n"}}, false);
    EXPECT_EQ(plan.installed, 2U);
    EXPECT_EQ(plan.installedAfter, 2U);
    EXPECT_THAT(plan.edited, ElementsAre(folder / "Web was edited and is kept; --overwrite replaces it",
                                         folder / "gone was edited and is kept; --overwrite removes it"));
    EXPECT_TRUE(plan.changes.empty());
    EXPECT_FALSE(plan.isComplete());
    const ActionPlan overwriting = planned(folder, {{"Web", "a\n"}}, true);
    EXPECT_EQ(overwriting.installedAfter, 1U);
    EXPECT_THAT(changedPaths(overwriting), ElementsAre(folder / "Web", "-" + (folder / "gone")));
    EXPECT_TRUE(overwriting.isComplete());
}

} // namespace
} // namespace kestrine
