#include "platform/host/files/FileDescriptor.h"
#include "platform/host/process/StandardOutput.h"
#include "tests/support/IsolatedProcess.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace kestrine {
namespace {

struct Pipe {
    explicit Pipe(int flags = 0) {
        int ends[2];
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC | flags), 0);
        reading = FileDescriptor(ends[0]);
        writing = FileDescriptor(ends[1]);
    }

    /// Everything that comes until the writing end is closed.
    std::string readAll() const {
        std::string text;
        char block[1000];
        for (ssize_t count; (count = ::read(reading.number(), block, sizeof block)) > 0;)
            text.append(block, static_cast<std::size_t>(count));
        return text;
    }

    FileDescriptor reading, writing;
};

TEST(StandardOutput, bytesPassUnchanged) {
    Pipe pipe;
    StandardOutput output(pipe.writing.number());
    const std::string text("100%n \xFF\0 end\n", 13);
    output.write(text);
    output.write("");
    output.write("more");
    ASSERT_TRUE(pipe.writing.close());
    EXPECT_EQ(pipe.readAll(), text + "more");
    EXPECT_FALSE(output.failed());
}

TEST(StandardOutput, moreThanAPipeHoldsArrivesWhole) {
    Pipe pipe;
    const std::string text(1'000'000, 'x');
    std::string arrived;
    std::thread reader([&] { arrived = pipe.readAll(); });
    StandardOutput output(pipe.writing.number());
    output.write(text);
    EXPECT_TRUE(pipe.writing.close());
    reader.join();
    EXPECT_EQ(arrived, text);
}

TEST(StandardOutput, aNonBlockingPipeIsWaitedFor) {
    Pipe pipe;
    ASSERT_EQ(::fcntl(pipe.writing.number(), F_SETFL, O_NONBLOCK), 0);
    const std::string text(1'000'000, 'y');
    std::string arrived;
    std::thread reader([&] { arrived = pipe.readAll(); });
    StandardOutput output(pipe.writing.number());
    output.write(text);
    EXPECT_TRUE(pipe.writing.close());
    reader.join();
    EXPECT_EQ(arrived, text);
    EXPECT_FALSE(output.failed());
}

TEST(StandardOutput, aReaderWhoWentAwayIsRememberedQuietly) {
    testing::runIsolated([] {
        (void)std::signal(SIGPIPE, SIG_IGN);
        Pipe pipe;
        ASSERT_TRUE(pipe.reading.close());
        StandardOutput output(pipe.writing.number());
        output.write("x");
        EXPECT_TRUE(output.failed());
        output.write("y");
        EXPECT_TRUE(output.failed());
    });
}

TEST(StandardOutput, afterAFailureNothingFollows) {
    testing::runIsolated([] {
        (void)std::signal(SIGPIPE, SIG_IGN);
        Pipe broken, whole;
        ASSERT_TRUE(broken.reading.close());
        StandardOutput output(broken.writing.number());
        output.write("x");
        ASSERT_EQ(::dup2(whole.writing.number(), broken.writing.number()), broken.writing.number());
        output.write("y");
        ASSERT_TRUE(broken.writing.close() && whole.writing.close());
        EXPECT_EQ(whole.readAll(), "");
    });
}

TEST(StandardOutput, aFullDeviceIsAFailure) {
    const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    if (::access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "this system has no /dev/full";
    StandardOutput output(full.number());
    output.write("x");
    EXPECT_TRUE(output.failed());
}

} // namespace
} // namespace kestrine
