#include "platform/host/files/FileRights.h"

#include "platform/host/files/FileDescriptor.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrine {
namespace {

class Rights : public ::testing::Test {
protected:
    Rights() { ::chmod(folder_.path().c_str(), 0777); }

    /// The mode of a new file that got these rights.
    mode_t modeAfter(const FileRights& rights) const {
        const FileDescriptor file(::open((folder_ / "new").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
        EXPECT_TRUE(giveRights(file.number(), rights));
        struct stat status {};
        EXPECT_EQ(::fstat(file.number(), &status), 0);
        return status.st_mode & 0777;
    }

    testing::TemporaryFolder folder_;
};

TEST_F(Rights, areThoseOfAnotherFile) {
    const std::string path = folder_.write("a", "");
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    const Result<FileRights> rights = rightsOfFile(path);
    ASSERT_TRUE(rights);
    EXPECT_EQ(rights->mode, 0640u);
    EXPECT_EQ(modeAfter(*rights), 0640u);
    EXPECT_EQ(rightsOfFile(folder_ / "absent").failure().reason, Reason::notFound);
}

TEST_F(Rights, ofAGroupThatCannotBeSetDoNotGoToAnother) {
    testing::runAsOrdinaryUser([this] {
        constexpr gid_t foreignGroup = 4242;
        EXPECT_EQ(modeAfter({0640, ::geteuid(), foreignGroup}), 0600u);
        EXPECT_EQ(modeAfter({0664, ::geteuid(), foreignGroup}), 0644u);
        EXPECT_EQ(modeAfter({0666, ::geteuid(), foreignGroup}), 0666u);
        EXPECT_EQ(modeAfter({0640, 4242, ::getegid()}), 0640u) << "only the owner differs";
    });
}

} // namespace
} // namespace kestrine
