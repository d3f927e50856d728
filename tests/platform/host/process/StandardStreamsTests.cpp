#include "platform/host/process/StandardStreams.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::runIsolated;
using testing::runWithOwnMounts;
using testing::TemporaryFolder;

TEST(StandardStreams, closedStreamsAreOpenedSoThatNoFileBecomesTheOutput) {
    const TemporaryFolder folder;
    runIsolated([&] {
        for (const int descriptor : {0, 1, 2})
            ::close(descriptor);
        prepareStandardStreams();
        EXPECT_GT(::open((folder / "a").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), 2);
        char byte = 0;
        EXPECT_EQ(::read(0, &byte, 1), -1);
        EXPECT_EQ(::write(1, "lost", 4), -1);
        EXPECT_EQ(::write(2, "lost", 4), -1);
    });
    EXPECT_EQ(testing::readFile(folder / "a"), "");
}

TEST(StandardStreams, openStreamsStayUnchanged) {
    const TemporaryFolder folder;
    runIsolated([&] {
        const int file = ::open((folder / "a").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        ::dup2(file, 1);
        ::close(0);
        prepareStandardStreams();
        EXPECT_EQ(::write(1, "kept", 4), 4);
    });
    EXPECT_EQ(testing::readFile(folder / "a"), "kept");
}

TEST(StandardStreams, withoutDevNullTheNumbersAreInUseToo) {
    const TemporaryFolder folder;
    runWithOwnMounts([&] {
        testing::mountFileSystem(folder / "disk", 64);
        if (::chroot((folder / "disk").c_str()) != 0 || ::chdir("/") != 0)
            GTEST_SKIP() << "this process may not change its root folder";
        ::close(1);
        prepareStandardStreams();
        EXPECT_GT(::open("/a", O_WRONLY | O_CREAT | O_CLOEXEC, 0600), 2);
        EXPECT_EQ(::write(1, "lost", 4), -1);
    });
}

TEST(StandardStreams, writingToAClosedPipeDoesNotEndTheProcess) {
    runIsolated([] {
        prepareStandardStreams();
        int ends[2];
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        ::close(ends[0]);
        EXPECT_EQ(::write(ends[1], "x", 1), -1);
        EXPECT_EQ(errno, EPIPE);
    });
}

TEST(StandardStreams, writingAboveASizeLimitDoesNotEndTheProcess) {
    const TemporaryFolder folder;
    runIsolated([&] {
        prepareStandardStreams();
        const rlimit limit{0, 0};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
        const int file = ::open((folder / "a").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        EXPECT_EQ(::write(file, "x", 1), -1);
        EXPECT_EQ(errno, EFBIG);
    });
}

} // namespace
} // namespace kestrine
