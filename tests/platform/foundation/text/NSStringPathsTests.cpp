#include "platform/foundation/text/NSString.h"
#include "tests/support/EnvironmentVariable.h"

#include <gtest/gtest.h>
#include <pwd.h>

namespace kestrine {
namespace {

/// A path, an operand for operations that need one, and the result.
struct PathCase {
    const char* path;
    const char* operand;
    const char* expected;
};

struct SplitCase {
    const char* path;
    const char* expected;
};

NSString text(const char* bytes) { return NSString::fromUTF8(bytes); }

TEST(NSStringPaths, aComponentIsAppendedAfterOneSeparator) {
    const PathCase cases[] = {
        {"/tmp", "a.tiff", "/tmp/a.tiff"},
        {"/tmp/", "a", "/tmp/a"},
        {"/", "a", "/a"},
        {"", "a", "a"},
        {"/tmp", "/a//b/", "/tmp/a/b"},
        {"/tmp", "", "/tmp"},
        {"", "", ""},
        {"/", "", "/"},
        {"/", "/x/a.jpg", "/x/a.jpg"},
        {"a//b", "c", "a/b/c"},
        {"/tmp", "../x", "/tmp/../x"},
        {"", "/a", "/a"},
        {"/work", "caf\xff.jpg", "/work/caf\xff.jpg"},
    };
    for (const PathCase& row : cases)
        EXPECT_EQ(text(row.path).appendingPathComponent(text(row.operand)).utf8(), row.expected)
            << row.path << " + " << row.operand;
}

TEST(NSStringPaths, theLastComponentFollowsTheLastSeparator) {
    const SplitCase cases[] = {{"/tmp/a.tiff", "a.tiff"},
                               {"/tmp/", "tmp"},
                               {"a///", "a"},
                               {"a", "a"},
                               {"/", "/"},
                               {"//", "/"},
                               {"", ""},
                               {"/a", "a"}};
    for (const SplitCase& row : cases)
        EXPECT_EQ(text(row.path).lastPathComponent().utf8(), row.expected) << row.path;
}

TEST(NSStringPaths, deletingTheLastComponentLeavesItsFolder) {
    const SplitCase cases[] = {{"/tmp/a.tiff", "/tmp"},
                               {"/tmp/lock/", "/tmp"},
                               {"/tmp/", "/"},
                               {"/tmp", "/"},
                               {"/", "/"},
                               {"a.tiff", ""},
                               {"", ""},
                               {"a/b", "a"},
                               {"/a//b//c", "/a/b"},
                               {"/a/b/", "/a"}};
    for (const SplitCase& row : cases)
        EXPECT_EQ(text(row.path).deletingLastPathComponent().utf8(), row.expected) << row.path;
}

TEST(NSStringPaths, theExtensionFollowsTheLastDotOfTheLastComponent) {
    const SplitCase cases[] = {{"/tmp/a.tiff", "tiff"},
                               {".a.tiff", "tiff"},
                               {"/tmp/a", ""},
                               {".tiff", ""},
                               {"/tmp/.tiff", ""},
                               {"a..tiff", "tiff"},
                               {"a.", ""},
                               {"a.b/", "b"},
                               {"a.b/c", ""},
                               {"/", ""},
                               {"", ""},
                               {"..", ""},
                               {"a/..", ""},
                               {"a.JPG", "JPG"},
                               {"/x.d/.a", ""}};
    for (const SplitCase& row : cases)
        EXPECT_EQ(text(row.path).pathExtension().utf8(), row.expected) << row.path;
}

TEST(NSStringPaths, deletingTheExtensionDeletesTheDotToo) {
    const SplitCase cases[] = {{"/tmp/a.tiff", "/tmp/a"},
                               {"/tmp/", "/tmp"},
                               {"a.b/", "a"},
                               {"a..tiff", "a."},
                               {".tiff", ".tiff"},
                               {"/", "/"},
                               {"", ""},
                               {"a", "a"},
                               {"a.", "a"},
                               {"..", ".."},
                               {"a.b/c", "a.b/c"}};
    for (const SplitCase& row : cases)
        EXPECT_EQ(text(row.path).deletingPathExtension().utf8(), row.expected) << row.path;
}

TEST(NSStringPaths, anExtensionIsAppendedAfterADot) {
    const PathCase cases[] = {{"/tmp/a.old", "tiff", "/tmp/a.old.tiff"},
                              {"/tmp/", "tiff", "/tmp.tiff"},
                              {"a.", "tiff", "a..tiff"},
                              {"a", "", "a."},
                              {"a", "png", "a.png"}};
    for (const PathCase& row : cases)
        EXPECT_EQ(text(row.path).appendingPathExtension(text(row.operand)).utf8(), row.expected) << row.path;
}

TEST(NSStringPaths, anExtensionIsNotAppendedToAnEmptyPathOrTheRoot) {
    EXPECT_EQ(NSString(u"").appendingPathExtension(u"tiff"), NSString(u""));
    EXPECT_EQ(NSString(u"/").appendingPathExtension(u"tiff"), NSString(u"/"));
}

TEST(NSStringPaths, componentsIncludeTheRootAndATrailingSeparator) {
    using Components = std::vector<NSString>;
    EXPECT_EQ(NSString(u"/tmp//a").pathComponents(), (Components{u"/", u"tmp", u"a"}));
    EXPECT_EQ(NSString(u"tmp/a").pathComponents(), (Components{u"tmp", u"a"}));
    EXPECT_EQ(NSString(u"/tmp/").pathComponents(), (Components{u"/", u"tmp", u"/"}));
    EXPECT_EQ(NSString(u"/").pathComponents(), (Components{u"/"}));
    EXPECT_EQ(NSString(u"").pathComponents(), (Components{}));
}

TEST(NSStringPaths, aTildeIsTheHomeFolder) {
    const testing::EnvironmentVariable home("HOME", "/home/me");
    const SplitCase cases[] = {{"~", "/home/me"},
                               {"~/", "/home/me/"},
                               {"~/a/~/b", "/home/me/a/~/b"},
                               {"/~/a", "/~/a"},
                               {"a~", "a~"},
                               {"", ""},
                               {"~no such user/a", "~no such user/a"}};
    for (const SplitCase& row : cases)
        EXPECT_EQ(text(row.path).expandingTildeInPath().utf8(), row.expected) << row.path;
}

TEST(NSStringPaths, aTildeWithANameIsThatUsersHomeFolder) {
    const passwd* root = ::getpwnam("root");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(text("~root/a").expandingTildeInPath().utf8(), std::string(root->pw_dir) + "/a");
    EXPECT_EQ(NSString(std::u16string(u"~root\0x/a", 9)).expandingTildeInPath()[0], u'~');
}

TEST(NSStringPaths, aHomeFolderInTheRootGivesNoDoubleSeparator) {
    const testing::EnvironmentVariable home("HOME", "/");
    EXPECT_EQ(text("~").expandingTildeInPath().utf8(), "/");
    EXPECT_EQ(text("~/a").expandingTildeInPath().utf8(), "/a");
}

TEST(NSStringPaths, aPathWithoutATildeIsReturnedItself) {
    const NSString path(u"/a//b/");
    EXPECT_TRUE(path.expandingTildeInPath().isSame(path));
}

} // namespace
} // namespace kestrine
