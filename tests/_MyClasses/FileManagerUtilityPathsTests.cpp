#include "_MyClasses/Category/FileManagerUtility.h"
#include "tests/support/EnvironmentVariable.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

struct TwoPaths {
    const char* first;
    const char* second;
    bool expected;
};

TEST(FileManagerUtility, volumesAreComparedByTheirNamesInThePaths) {
    const testing::EnvironmentVariable home("HOME", "/Users/me");
    const TwoPaths rows[] = {
        {"/Volumes/Disk/a", "/volumes/Disk/b", true},
        {"/Volumes/Disk/a", "/Volumes/Disk/b/c", true},
        {"/Volumes/Disk/a", "/Volumes/Other/a", false},
        {"/Volumes/Disk/a", "/Volumes/disk/a", false},
        {"/Volumes/Disk/a", "/Users/a", false},
        {"/Users/a", "/Users/b/c", true},
        {"/Users/a", "/Applications/b", false},
        {"/Volumes/Disk", "/Volumes/Other", true},   // no slash after the name: both are in "Volumes"
        {"/Volumes/Disk", "/Volumes/Disk/a", false}, // which is not "Disk"
        {"/Volumes/", "/Volumes/x", true},
        {"/Volumes//a", "/Volumes/b", true},
        {"/file", "/file", false},
        {"/file", "/Users/a", false},
        {"/Users/a", "/file", false},
        {"file", "file", false},
        {"", "", false},
        {"/", "/", false},
        {"~/a", "/Users/b", true},
        {"/Users/b", "~", true},
        {"~/a", "~/b", true},
        {"a/Users/b", "/Users/b", true},
        {"/mnt/Volumes/Disk/a", "/Volumes/Disk/b", true},
        {"/caf\xe9/a", "/caf\xe9/b", true},
        {"/caf\xe9/a", "/caf\xe8/b", false},
    };
    for (const TwoPaths& row : rows)
        EXPECT_EQ(isSameVolumePath(NSString::fromUTF8(row.first), NSString::fromUTF8(row.second)),
                  row.expected)
            << row.first << " and " << row.second;
}

TEST(FileManagerUtility, aPathThatBeginsWithTheFolderIsASubdirectory) {
    const TwoPaths rows[] = {
        {"/a/b", "/a/b/c", true}, {"/a/b", "/a/bc", true},   {"/a/b", "/a/b/", true},
        {"/a/b", "/a/b", false},  {"/a/b", "/A/b/c", false}, {"/a/b/c", "/a/b", false},
        {"/b", "/a/b", false},    {"", "/a", false},         {"/a", "", false},
        {"", "", false},
    };
    for (const TwoPaths& row : rows)
        EXPECT_EQ(isSubdirectory(NSString::fromUTF8(row.first), NSString::fromUTF8(row.second)), row.expected)
            << row.first << " and " << row.second;
}

} // namespace
} // namespace kestrine
