#include "kestrinectl/convert/FolderNames.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kestrine {
namespace {

std::vector<std::string> sorted(const std::vector<std::string>& names) {
    FolderNames folder;
    for (const std::string& name : names)
        folder.add(name);
    folder.sort();
    std::vector<std::string> result;
    for (std::size_t i = 0; i < folder.count(); ++i)
        result.emplace_back(folder[i]);
    return result;
}

TEST(FolderNames, areSortedByTheirBytes) {
    std::vector<std::string> names = {"b", "a",    "ab",        "a\xff",     "A",       "a b",
                                      "",  "\x80", "aaaaaaaaa", "aaaaaaaab", "aaaaaaaa"};
    const std::vector<std::string> shuffled = names;
    std::ranges::sort(names);
    EXPECT_EQ(sorted(shuffled), names);
}

TEST(FolderNames, mayBeginAlike) {
    const std::vector<std::string> names = {"IMG_0000000001.jpg", "IMG_0000000002.jpg", "IMG_0000000002.png",
                                            "IMG_00000000020000.jpg", "IMG_0000000003"};
    std::vector<std::string> reversed(names.rbegin(), names.rend());
    EXPECT_EQ(sorted(reversed), names);
    EXPECT_EQ(sorted({"only.jpg"}), std::vector<std::string>{"only.jpg"});
    EXPECT_EQ(sorted({"same", "same"}), (std::vector<std::string>{"same", "same"}));
}

TEST(FolderNames, ofAnEmptyFolderAreNone) { EXPECT_TRUE(sorted({}).empty()); }

} // namespace
} // namespace kestrine
