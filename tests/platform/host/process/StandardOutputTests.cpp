#include "platform/host/files/FileDescriptor.h"
#include "platform/host/process/StandardOutput.h"
#include "tests/support/IsolatedProcess.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>
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

    /// Reads until the writing end is closed.
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

TEST(StandardOutput, moreBytesThanAPipeHoldsAreWritten) {
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

TEST(StandardOutput, writingWaitsForANonBlockingPipe) {
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

TEST(StandardOutput, anInterruptedWriteIsRepeated) {
    testing::runIsolated([] {
        Pipe pipe(O_NONBLOCK);
        while (::write(pipe.writing.number(), "filling", 7) > 0) {
        }
        ASSERT_EQ(::fcntl(pipe.writing.number(), F_SETFL, 0) + ::fcntl(pipe.reading.number(), F_SETFL, 0), 0);
        sigset_t alarm;
        sigemptyset(&alarm);
        sigaddset(&alarm, SIGALRM);
        ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &alarm, nullptr), 0);
        std::string arrived;
        std::thread reader([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            arrived = pipe.readAll();
        });
        ASSERT_EQ(::pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr), 0);
        struct sigaction action {};
        action.sa_handler = [](int) {};
        const itimerval everyFewMilliseconds{{0, 5000}, {0, 5000}};
        ASSERT_EQ(::sigaction(SIGALRM, &action, nullptr), 0);
        ASSERT_EQ(::setitimer(ITIMER_REAL, &everyFewMilliseconds, nullptr), 0);
        StandardOutput output(pipe.writing.number());
        output.write("end");
        EXPECT_FALSE(output.failed());
        EXPECT_TRUE(pipe.writing.close());
        reader.join();
        EXPECT_TRUE(arrived.ends_with("end"));
    });
}

TEST(StandardOutput, aClosedReaderIsAFailure) {
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

TEST(StandardOutput, afterAFailureNothingIsWritten) {
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

TEST(CollectedOutput, piecesAreWrittenTogetherWhenTheyAreFlushed) {
    Pipe pipe(O_NONBLOCK);
    StandardOutput output(pipe.writing.number());
    CollectedOutput pieces(output);
    pieces.add("one");
    pieces.add(" two");
    char block[100];
    EXPECT_LT(::read(pipe.reading.number(), block, sizeof block), 0) << "nothing is there yet";
    pieces.flush();
    EXPECT_EQ(::read(pipe.reading.number(), block, sizeof block), 7);
}

TEST(CollectedOutput, textOfAnyLengthPassesUnchanged) {
    Pipe pipe;
    std::string text;
    for (unsigned i = 0; i < 10'000; ++i)
        text += std::to_string(i);
    {
        StandardOutput output(pipe.writing.number());
        CollectedOutput pieces(output);
        pieces.add(text);
        pieces.add("end");
    }
    ASSERT_TRUE(pipe.writing.close());
    EXPECT_EQ(pipe.readAll(), text + "end");
}

} // namespace
} // namespace kestrine
