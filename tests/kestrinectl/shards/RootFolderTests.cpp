#include "kestrinectl/shards/RootFolder.h"

#include "kestrinectl/CommandError.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kestrine {
namespace {

namespace fs = std::filesystem;

/// A root with links to a folder inside and to one outside.
struct Root : ::testing::Test {
    testing::TemporaryFolder folder;
    fs::path path = fs::canonical(fs::path(folder / "x").parent_path());

    void SetUp() override {
        fs::create_directories(path / "root/sub");
        fs::create_directories(path / "root2");
        fs::create_directory_symlink("sub", path / "root/inside");
        fs::create_directory_symlink("../root2", path / "root/outside");
    }
    std::optional<std::string> relative(const std::string& below) const {
        return RootFolder((path / "root").native()).relative((path / below).native());
    }
};

TEST_F(Root, givesPathsBelowItWithoutLinks) {
    EXPECT_EQ(relative("root/a"), "a");
    EXPECT_EQ(relative("root/inside/a"), "sub/a");
    EXPECT_EQ(relative("root/new/folder/a"), "new/folder/a");
    EXPECT_EQ(relative("root2/../root/a"), "a");
}

TEST_F(Root, doesNotHoldWhatLiesOutside) {
    for (const char* outside : {"root2/a", "a", "root/../a", "root/outside/a", "root/outside/new/a"})
        EXPECT_EQ(relative(outside), std::nullopt) << outside;
    const RootFolder root((path / "root").native());
    EXPECT_TRUE(root.holds("inside/a"));
    EXPECT_FALSE(root.holds("outside/a"));
}

TEST_F(Root, mustBeAFolder) { EXPECT_THROW(RootFolder((path / "absent").native()), CommandError); }

} // namespace
} // namespace kestrine
