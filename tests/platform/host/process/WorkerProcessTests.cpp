#include "platform/host/process/WorkerProcess.h"
#include "tests/platform/host/process/WorkerTesting.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace kestrine {
namespace {

using namespace testing;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

TEST(WorkerProcess, answersRequests) {
    const auto worker = startWorker();
    for (std::uint8_t byte = 0; byte < 3; ++byte)
        EXPECT_EQ(*worker->exchange(Bytes{order(Order::echo), byte}, {}, amplyLimited), Bytes{byte});
    EXPECT_TRUE(worker->isAlive());
    EXPECT_EQ(worker->modules(), 5u);
}

TEST(WorkerProcess, isPreparedForTheModulesThatWereAskedFor) {
    EXPECT_EQ(answerTo(*startWorker(), Order::preparedModules), 5);
}

TEST(WorkerProcess, inheritsWhatThisProcessPrepared) {
    EXPECT_EQ(processOf(*startWorker(), Order::processOfPreparation), ::getpid());
}

TEST(WorkerProcess, readsAndWritesTheFilesThatItIsSent) {
    const TemporaryFolder folder;
    const FileDescriptor source = *openForReading(folder.write("a", "content"));
    const FileDescriptor result(::open((folder / "b").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    const int files[] = {source.number(), result.number()};
    ASSERT_TRUE(startWorker()->exchange(Bytes{order(Order::copyFile)}, files, amplyLimited));
    EXPECT_EQ(readFile(folder / "b"), "content");
}

TEST(WorkerProcess, inheritsNothingButItsSocketAndNullStreams) {
    const TemporaryFolder folder;
    const FileDescriptor secret = *openForReading(folder.write("secret", "content"));
    const auto first = startWorker(), second = startWorker();
    EXPECT_EQ(answerTo(*second, Order::countDescriptors), 4);
    runIsolated([&] {
        ::dup2(secret.number(), STDIN_FILENO);
        EXPECT_EQ(answerTo(*startWorker(), Order::countFiles), 0);
    });
}

TEST(WorkerProcess, doesNotWriteWhatTheParentHasNotFlushed) {
    const TemporaryFolder folder;
    const std::string path = folder.write("output", "");
    runIsolated([&] {
        std::FILE* const file = std::fopen(path.c_str(), "w");
        std::fputs("once", file);
        const auto worker = startWorker();
        EXPECT_EQ(answerTo(*worker, Order::endAfterAnswer), 0);
        while (worker->isAlive())
            std::this_thread::sleep_for(1ms);
        std::fclose(file);
    });
    EXPECT_EQ(readFile(path), "once");
}

using Crash = ::testing::TestWithParam<Order>;

TEST_P(Crash, isReportedAtOnceAndTheNextWorkerAnswers) {
    auto worker = startWorker();
    (void)worker->layers();
    const Clock::time_point begin = Clock::now();
    const Result<Bytes> answer = worker->exchange(Bytes{order(GetParam())}, {}, amplyLimited);
    EXPECT_LT(Clock::now() - begin, 2s); // a benchmark measures the exact time; test machines are busy
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.failure().reason, Reason::crashed);
    EXPECT_EQ(answer.failure().text, "the worker process crashed");
    EXPECT_FALSE(worker->isAlive());
    EXPECT_EQ(worker->exchange(Bytes{order(Order::echo), 1}, {}, amplyLimited).failure().reason,
              Reason::crashed);
    worker = startWorker();
    EXPECT_EQ(*worker->exchange(Bytes{order(Order::echo), 1}, {}, amplyLimited), Bytes{1});
}

INSTANTIATE_TEST_SUITE_P(Orders, Crash,
                         ::testing::Values(Order::writeToNull, Order::abort, Order::overflowTheStack,
                                           Order::throwOutOfServe, Order::endQuietly));

TEST(WorkerProcess, thatLoopsIsEndedAtTheLimitOfItsProcessorTime) {
    const auto worker = startWorker();
    const Result<Bytes> answer = worker->exchange(Bytes{order(Order::loopForEver)}, {}, {60ms, 60s});
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.failure().reason, Reason::timeLimit);
    EXPECT_EQ(answer.failure().text, "the worker process took too long");
    EXPECT_FALSE(worker->isAlive());
}

TEST(WorkerProcess, thatSleepsIsEndedAfterATimeWithoutProgress) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the thread sanitizer's own thread never stops working";
#endif
    const auto worker = startWorker();
    const Clock::time_point begin = Clock::now();
    const Result<Bytes> answer = worker->exchange(Bytes{order(Order::sleepForEver)}, {}, {60s, 150ms});
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.failure().reason, Reason::timeLimit);
    EXPECT_GE(Clock::now() - begin, 150ms);
    EXPECT_FALSE(worker->isAlive());
}

TEST(WorkerProcess, thatWorksForLongerThanTheTimeWithoutProgressIsNotEnded) {
    const auto worker = startWorker();
    const Result<Bytes> answer = worker->exchange(Bytes{order(Order::workForAWhile)}, {}, {60s, 250ms});
    EXPECT_TRUE(answer) << answer.failure().text;
}

TEST(WorkerProcess, thatSpentMuchTimeBeforeGetsTheWholeLimitForEachAnswer) {
    const auto worker = startWorker();
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(worker->exchange(Bytes{order(Order::workForAWhile)}, {}, {800ms, 60s}));
}

TEST(WorkerProcess, thatEndedBetweenRequestsIsNoticed) {
    const auto worker = startWorker();
    ASSERT_TRUE(worker->exchange(Bytes{order(Order::endAfterAnswer)}, {}, amplyLimited));
    while (worker->isAlive())
        std::this_thread::sleep_for(1ms);
    EXPECT_EQ(worker->exchange(Bytes{order(Order::echo), 1}, {}, amplyLimited).failure().reason,
              Reason::crashed);
    EXPECT_NE(worker->layers(), SandboxLayers{}); // the message came before the end
}

TEST(WorkerProcess, isOutOfReachOfAForkedCopy) {
    auto worker = startWorker();
    runIsolated([&] {
        EXPECT_FALSE(worker->isAlive());
        EXPECT_EQ(worker->layers(), SandboxLayers{});
        EXPECT_EQ(worker->exchange(Bytes{order(Order::echo), 1}, {}, amplyLimited).failure().reason,
                  Reason::crashed);
        worker.reset();
        EXPECT_EQ(answerTo(*startWorker(), Order::preparedModules), 5);
    });
    EXPECT_NE(worker->layers(), SandboxLayers{});
    EXPECT_EQ(*worker->exchange(Bytes{order(Order::echo), 2}, {}, amplyLimited), Bytes{2});
}

TEST(WorkerProcess, isReapedWithItsHandle) {
    runIsolated([] {
        startWorker().reset();
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
    });
}

TEST(WorkerProcess, answersWhereTheParentIgnoresTheEndOfChildren) {
    runIsolated([] {
        ::signal(SIGCHLD, SIG_IGN);
        auto worker = startWorker();
        EXPECT_FALSE(worker->exchange(Bytes{order(Order::abort)}, {}, amplyLimited));
        worker = startWorker();
        EXPECT_TRUE(worker->exchange(Bytes{order(Order::echo), 1}, {}, amplyLimited));
    });
}

TEST(WorkerProcess, survivesTheSignalsThatATerminalSendsToParentAndChild) {
    const auto worker = startWorker();
    const pid_t process = processOf(*worker);
    for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP})
        ASSERT_EQ(::kill(process, signal), 0);
    EXPECT_EQ(*worker->exchange(Bytes{order(Order::echo), 1}, {}, amplyLimited), Bytes{1});
}

TEST(WorkerProcess, endsWithItsParentEvenWhenItDoesNotListen) {
    runIsolated([] {
        ASSERT_TRUE(adoptsOrphans());
        const auto [parent, worker] = startParentOfASleepingWorker(false);
        ::kill(parent, SIGKILL);
        EXPECT_EQ(::waitpid(parent, nullptr, 0), parent);
        EXPECT_EQ(::waitpid(worker, nullptr, 0), worker);
    });
}

} // namespace
} // namespace kestrine
