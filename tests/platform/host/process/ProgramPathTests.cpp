#include "platform/host/process/ProgramPath.h"

#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::TemporaryFolder;

void setPath(const std::string& path) { ::setenv("PATH", path.c_str(), 1); }

TEST(ProgramPath, ofThisProgramIsAbsolute) {
    EXPECT_TRUE(pathOfThisProgram().starts_with('/'));
    EXPECT_TRUE(std::filesystem::exists(pathOfThisProgram()));
}

TEST(ProgramPath, ofThisLibraryIsThatOfTheProgramIntoWhichItWasLinked) {
    const std::string found = pathOfThisLibrary(); // empty if the program was started with a relative path
    EXPECT_TRUE(found.empty() || found == pathOfThisProgram()) << found;
}

TEST(ProgramPath, possiblePathsFollowTheOrderOfPATH) {
    setPath("/b::/a");
    EXPECT_THAT(possiblePathsOf("x"), ::testing::ElementsAre("/b/x", "./x", "/a/x"));
    EXPECT_THAT(possiblePathsOf("./x"), ::testing::ElementsAre("./x"));
}

TEST(ProgramPath, aProgramIsAFileThatMayBeRun) {
    const TemporaryFolder folder;
    folder.write("text", "");
    std::filesystem::permissions(folder.write("program", ""), std::filesystem::perms::owner_all);
    std::filesystem::create_directory(folder / "folder");
    setPath("/nowhere:" + folder.path().string());
    EXPECT_TRUE(programExists("program"));
    EXPECT_FALSE(programExists("text"));
    EXPECT_FALSE(programExists("folder"));
    EXPECT_FALSE(programExists("other"));
}

} // namespace
} // namespace kestrine
