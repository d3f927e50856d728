#include "platform/host/files/RemoveUnchanged.h"

#include "tests/support/InterposedCalls.h"
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::readFile;

class RemoveUnchanged : public ::testing::Test {
protected:
    Result<bool> removed() { return removeIfContentIs(path_, digestOf("known")); }

    testing::TemporaryFolder folder_;
    const std::string path_ = folder_ / "a.jpg";
};

TEST_F(RemoveUnchanged, aFileWithTheContentIsRemoved) {
    folder_.write("a.jpg", "known");
    EXPECT_TRUE(*removed());
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

TEST_F(RemoveUnchanged, aFileWithOtherContentALinkAndAFolderStay) {
    folder_.write("a.jpg", "other");
    EXPECT_FALSE(*removed());
    EXPECT_EQ(readFile(path_), "other");
    std::filesystem::remove(path_);
    folder_.write("target", "known");
    std::filesystem::create_symlink("target", path_);
    EXPECT_FALSE(*removed());
    EXPECT_TRUE(std::filesystem::is_symlink(path_));
    std::filesystem::remove(path_);
    std::filesystem::create_directory(path_);
    EXPECT_FALSE(*removed());
    EXPECT_TRUE(std::filesystem::is_directory(path_));
}

TEST_F(RemoveUnchanged, aMissingFileIsNotAnError) { EXPECT_FALSE(*removed()); }

TEST_F(RemoveUnchanged, aFileThatCannotBeExaminedIsAFailure) {
    std::filesystem::create_symlink("a.jpg", path_); // a link to itself
    EXPECT_FALSE(removed());
}

TEST_F(RemoveUnchanged, aFileThatTakesThePlaceMeanwhileStays) {
    folder_.write("a.jpg", "known");
    folder_.write("other", "known");
    testing::InterposedCalls calls;
    calls.onRename = [&](const std::string& oldName, const std::string&) {
        if (oldName == "a.jpg") // after the last look at the file
            std::filesystem::rename(folder_ / "other", path_);
        return 0;
    };
    EXPECT_FALSE(*removed());
    EXPECT_EQ(readFile(path_), "known");
}

TEST_F(RemoveUnchanged, aFolderThatDoesNotPermitItIsAFailure) {
    folder_.write("a.jpg", "known");
    testing::InterposedCalls calls;
    calls.onRename = [](const std::string&, const std::string&) { return EACCES; };
    EXPECT_EQ(removed().failure().reason, Reason::notPermitted);
    EXPECT_EQ(readFile(path_), "known");
}

} // namespace
} // namespace kestrine
