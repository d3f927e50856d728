#include "platform/host/files/AtomicFile.h"
#include "tests/support/InterposedCalls.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using testing::InterposedCalls;
using testing::readFile;
using testing::TemporaryFolder;

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

TEST(StagedFile, isOnTheDiskBeforeItHasItsName) {
    const TemporaryFolder folder;
    const InterposedCalls calls;
    Result<StagedFile> file = StagedFile::write(folder.path(), bytesOf("new"));
    ASSERT_TRUE(file);
    EXPECT_EQ(calls.made(), std::vector<std::string>{"sync 3 bytes"});
    EXPECT_EQ(*file->publish([&](unsigned) { return folder / "a.jpg"; }), folder / "a.jpg");
    EXPECT_EQ(calls.made(),
              (std::vector<std::string>{"sync 3 bytes", "name a.jpg", "sync " + folder.path().string()}));
    EXPECT_EQ(readFile(folder / "a.jpg"), "new");
}

TEST(StagedFile, takesTheFirstFreeNameAndLeavesNothingElse) {
    const TemporaryFolder folder;
    folder.write("a.jpg", "mine");
    {
        Result<StagedFile> file = StagedFile::write(folder.path(), bytesOf("new"));
        EXPECT_EQ(*file->publish([&](unsigned n) { return folder / (n == 0 ? "a.jpg" : "b.jpg"); }),
                  folder / "b.jpg");
    }
    EXPECT_EQ(namesIn(folder.path()), (std::vector<std::string>{"a.jpg", "b.jpg"}));
    EXPECT_EQ(readFile(folder / "a.jpg"), "mine");
}

TEST(StagedFile, isRemovedIfItIsNotPublished) {
    const TemporaryFolder folder;
    { EXPECT_TRUE(StagedFile::write(folder.path(), bytesOf("new"))); }
    {
        Result<StagedFile> file = StagedFile::write(folder.path(), bytesOf("new"));
        EXPECT_FALSE(file->publish([](unsigned) { return ""; }));
    }
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{});
}

TEST(StagedFile, needsItsFolder) {
    const TemporaryFolder folder;
    EXPECT_EQ(StagedFile::write(folder / "absent", bytesOf("new")).failure().reason, Reason::notFound);
}

} // namespace
} // namespace kestrine
