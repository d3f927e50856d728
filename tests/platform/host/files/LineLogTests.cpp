#include "platform/host/files/LineLog.h"

#include "platform/host/process/StopSignals.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <thread>

namespace kestrine {
namespace {

using ::testing::ElementsAre;
using testing::readFile;

bool mustNotWait() {
    ADD_FAILURE() << "it waits";
    return false;
}

TEST(LineLog, linesAreAppendedAndReadBack) {
    const testing::TemporaryFolder folder;
    for (const char* line : {"one", "two"}) {
        Result<LineLog> log = LineLog::open(folder / "log", mustNotWait);
        ASSERT_TRUE(log);
        EXPECT_TRUE(log->append(line, Durability::synced));
    }
    EXPECT_THAT(*LineLog::open(folder / "log", mustNotWait)->lines(), ElementsAre("one", "two"));
}

TEST(LineLog, anIncompleteLineIsNoneAndTheNextLineStandsAlone) {
    const testing::TemporaryFolder folder;
    folder.write("log", "one\ntw");
    Result<LineLog> log = LineLog::open(folder / "log", mustNotWait);
    EXPECT_THAT(*log->lines(), ElementsAre("one"));
    EXPECT_TRUE(log->append("three", Durability::cached));
    EXPECT_EQ(readFile(folder / "log"), "one\ntw\nthree\n");
}

TEST(LineLog, theFirstLineIsWrittenIntoAnEmptyFileOrOneThatWasCutOffWithinIt) {
    const testing::TemporaryFolder folder;
    for (const char* before : {"", "he", "header"}) {
        folder.write("log", before);
        EXPECT_TRUE(LineLog::open(folder / "log", mustNotWait)->begin("header"));
        EXPECT_EQ(readFile(folder / "log"), "header\n");
    }
}

TEST(LineLog, aFileOfSomethingElseIsNotBegun) {
    const testing::TemporaryFolder folder;
    for (const char* before : {"notes", "header of another", "\n"}) {
        folder.write("log", before);
        EXPECT_EQ(LineLog::open(folder / "log", mustNotWait)->begin("header").failure().reason,
                  Reason::malformed);
        EXPECT_EQ(readFile(folder / "log"), before);
    }
}

TEST(LineLog, aLogThatExistsIsNotCreatedAgain) {
    const testing::TemporaryFolder folder;
    EXPECT_TRUE(LineLog::create(folder / "log"));
    EXPECT_EQ(LineLog::create(folder / "log").failure().reason, Reason::alreadyExists);
}

TEST(LineLog, onlyOneHasTheLockAndOthersWaitOrFail) {
    const testing::TemporaryFolder folder;
    std::optional<LineLog> first = *LineLog::create(folder / "log");
    EXPECT_EQ(LineLog::open(folder / "log", [] { return false; }).failure().reason, Reason::alreadyExists);
    std::atomic<bool> hasWaited = false;
    std::jthread other([&] {
        EXPECT_TRUE(LineLog::open(folder / "log", [&] {
            errno = ENOTTY; // as output may leave it
            return hasWaited = true;
        }));
    });
    while (!hasWaited)
        std::this_thread::yield();
    first.reset();
    other.join();
}

TEST(LineLog, anInterruptedCallIsNotAnotherProcessWithTheLock) {
    const testing::TemporaryFolder folder;
    testing::runIsolated([&] {
        if (!testing::failSystemCall(SYS_flock, EINTR))
            GTEST_SKIP() << "this system permits no filter of system calls";
        const StopSignalsNoted scope;
        ASSERT_EQ(::raise(SIGTERM), 0); // ends the attempts
        EXPECT_EQ(LineLog::open(folder / "log", mustNotWait).failure().reason, Reason::refused);
    });
}

TEST(LineLog, rewritingReplacesTheFileInOneStepAndKeepsTheLock) {
    const testing::TemporaryFolder folder;
    Result<LineLog> log = LineLog::create(folder / "log");
    ASSERT_TRUE(log->append("old", Durability::cached));
    EXPECT_TRUE(log->rewrite({"new", "newer"}));
    EXPECT_TRUE(log->append("newest", Durability::cached));
    EXPECT_EQ(readFile(folder / "log"), "new\nnewer\nnewest\n");
    EXPECT_FALSE(LineLog::open(folder / "log", [] { return false; }));
}

TEST(LineLog, whoWaitedForARewrittenFileGetsTheNewOne) {
    const testing::TemporaryFolder folder;
    std::optional<LineLog> first = *LineLog::create(folder / "log");
    std::atomic<bool> hasWaited = false;
    std::jthread other([&] {
        const Result<LineLog> log = LineLog::open(folder / "log", [&] { return hasWaited = true; });
        EXPECT_THAT(*log->lines(), ElementsAre("new"));
    });
    while (!hasWaited)
        std::this_thread::yield();
    EXPECT_TRUE(first->rewrite({"new"}));
    first.reset();
}

} // namespace
} // namespace kestrine
