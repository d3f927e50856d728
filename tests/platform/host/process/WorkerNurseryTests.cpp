#include "platform/host/process/WorkerNursery.h"
#include "tests/platform/host/process/WorkerTesting.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace kestrine {
namespace {

using namespace testing;

struct WorkerNurseryTest : ::testing::Test {
    const WorkerNursery nursery{workerProgram()};
};

/// Whether a child of this process has that number.
bool isChild(pid_t process) { return ::waitid(P_PID, process, nullptr, WEXITED | WNOHANG | WNOWAIT) == 0; }

TEST_F(WorkerNurseryTest, startsWorkersThatAreNotOurChildren) {
    const auto worker = startWorker();
    EXPECT_FALSE(isChild(processOf(*worker)));
    EXPECT_EQ(answerTo(*worker, Order::preparedModules), 5);
    EXPECT_EQ(answerTo(*worker, Order::countDescriptors), 4);
}

TEST_F(WorkerNurseryTest, preparesForAllItsWorkers) {
    const pid_t preparing = processOf(*startWorker(), Order::processOfPreparation);
    EXPECT_NE(preparing, ::getpid());
    EXPECT_EQ(processOf(*startWorker(), Order::processOfPreparation), preparing);
}

TEST_F(WorkerNurseryTest, servesSeveralThreadsAndReplacesCrashedWorkers) {
    std::vector<std::thread> threads;
    for (std::uint8_t number = 0; number < 6; ++number)
        threads.emplace_back([number] {
            for (int round = 0; round < 5; ++round) {
                auto worker = startWorker();
                EXPECT_EQ(answerTo(*worker, Order::abort), 255);
                EXPECT_FALSE(worker->isAlive());
                worker = startWorker();
                EXPECT_EQ(*worker->exchange(Bytes{order(Order::echo), number}, {}, amplyLimited),
                          Bytes{number});
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(WorkerNurseryTest, endsWorkersThatTakeTooLong) {
    const auto worker = startWorker();
    const pid_t process = processOf(*worker);
    const AnswerLimits limits{std::chrono::milliseconds{50}, std::chrono::minutes{5}};
    EXPECT_EQ(worker->exchange(Bytes{order(Order::loopForEver)}, {}, limits).failure().reason,
              Reason::timeLimit);
    EXPECT_EQ(::kill(process, 0), -1); // not even a zombie remains
    EXPECT_EQ(errno, ESRCH);
}

TEST(WorkerNursery, endsWithItsWorkers) {
    runIsolated([] {
        ASSERT_TRUE(adoptsOrphans());
        std::unique_ptr<WorkerProcess> worker;
        pid_t process = 0;
        {
            const WorkerNursery nursery(workerProgram());
            worker = startWorker();
            process = processOf(*worker);
        }
        EXPECT_EQ(::waitpid(process, nullptr, 0), process);
        EXPECT_EQ(answerTo(*worker, Order::echo), 255);
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1); // the nursery's process is reaped
    });
}

TEST(WorkerNursery, endsWithItsParentAndAllWorkers) {
    runIsolated([] {
        ASSERT_TRUE(adoptsOrphans());
        ::kill(startParentOfASleepingWorker(true).parent, SIGKILL);
        for (int ended = 0; ended < 3; ++ended) // the parent, the nursery and the worker
            EXPECT_GT(::wait(nullptr), 0);
        EXPECT_EQ(::wait(nullptr), -1);
    });
}

TEST(WorkerNursery, thatHasNoProcessStartsNothingAndHarmsNobody) {
    runIsolated([] {
        { // The sanitizer of undefined behaviour opens pipes to check objects, but only for the first of a
          // type.
            const WorkerNursery first(workerProgram());
            ASSERT_TRUE(WorkerProcess::start(workerProgram(), 0));
        }
        const pid_t bystander = ::fork();
        if (bystander == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            for (;;)
                ::pause();
        }
        {
            rlimit none{3, 3}; // no descriptor is left for a connection
            ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
            const WorkerNursery nursery(workerProgram());
            const auto worker = WorkerProcess::start(workerProgram(), 0);
            ASSERT_FALSE(worker);
            EXPECT_EQ(worker.failure().text, "the process that starts workers has ended");
        }
        EXPECT_EQ(::waitpid(bystander, nullptr, WNOHANG), 0); // it still runs
        ::kill(bystander, SIGKILL);
        ::waitpid(bystander, nullptr, 0);
    });
}

TEST_F(WorkerNurseryTest, startsNothingForAForkedCopyAndIsNotHarmedByIt) {
    auto worker = startWorker();
    const pid_t process = processOf(*worker);
    runIsolated([&] {
        EXPECT_FALSE(WorkerProcess::start(workerProgram(), 0));
        worker.reset();
        WorkerNursery::connection()->endWorker(process);
        WorkerNursery::connection()->endNursery();
    });
    EXPECT_EQ(answerTo(*worker, Order::preparedModules), 5);
    EXPECT_EQ(answerTo(*startWorker(), Order::preparedModules), 5);
}

using testing::TemporaryFolder;

struct HelperNurseryTest : ::testing::Test {
    const WorkerNursery nursery{std::string(KESTRINE_TESTS_WORKER)};
};

pid_t helperOf(WorkerProcess& worker) { return processOf(worker, Order::processOfPreparation); }

void waitForEndOf(const WorkerProcess& worker) {
    while (worker.isAlive())
        std::this_thread::sleep_for(std::chrono::milliseconds{1});
}

TEST_F(HelperNurseryTest, hasOneHelperAsLongAsThatRuns) {
    const auto worker = startWorker();
    EXPECT_TRUE(isChild(helperOf(*worker)));
    EXPECT_EQ(helperOf(*startWorker()), helperOf(*worker));
}

TEST_F(HelperNurseryTest, reapsAHelperThatHasEndedAndStartsItAgain) {
    const auto worker = startWorker();
    const pid_t helper = helperOf(*worker);
    ASSERT_EQ(::kill(helper, SIGKILL), 0);
    waitForEndOf(*worker);
    const auto next = startWorker();
    EXPECT_FALSE(isChild(helper)); // not even as a zombie
    EXPECT_TRUE(isChild(helperOf(*next)));
    EXPECT_EQ(answerTo(*next, Order::preparedModules), 5);
}

TEST_F(HelperNurseryTest, letsNoOldHandleEndAWorkerOfTheNewHelper) {
    auto old = startWorker();
    const pid_t helper = helperOf(*old);
    ::kill(helper, SIGKILL);
    waitForEndOf(*old);
    const auto next = startWorker();
    const auto connection = WorkerNursery::connection();
    old.reset();
    EXPECT_EQ(WorkerNursery::connection(), connection);
    EXPECT_EQ(answerTo(*next, Order::preparedModules), 5);
}

TEST_F(HelperNurseryTest, isRenewedOnceForManyThreads) {
    const auto worker = startWorker();
    ::kill(helperOf(*worker), SIGKILL);
    waitForEndOf(*worker);
    std::vector<pid_t> helpers(6);
    std::vector<std::thread> threads;
    for (pid_t& helper : helpers)
        threads.emplace_back([&helper] { helper = helperOf(*startWorker()); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(helpers, std::vector<pid_t>(6, helperOf(*startWorker())));
}

TEST_F(HelperNurseryTest, startsAnotherHelperForAForkedCopyAndIsNotHarmedByIt) {
    auto worker = startWorker();
    const pid_t helper = helperOf(*worker);
    runIsolated([&] {
        worker.reset();
        const auto own = startWorker();
        EXPECT_NE(helperOf(*own), helper);
        EXPECT_TRUE(isChild(helperOf(*own)));
        EXPECT_EQ(helperOf(*startWorker()), helperOf(*own));
    });
    EXPECT_EQ(answerTo(*worker, Order::preparedModules), 5);
    EXPECT_EQ(helperOf(*startWorker()), helper);
}

TEST(WorkerNursery, triesAgainToStartAHelperThatWasMissing) {
    const TemporaryFolder folder;
    const WorkerNursery nursery(folder / "helper");
    EXPECT_EQ(WorkerProcess::start(workerProgram(), 0).failure().text,
              "the process that starts workers has ended");
    std::filesystem::create_symlink(KESTRINE_TESTS_WORKER, folder / "helper");
    EXPECT_EQ(answerTo(*startWorker(), Order::preparedModules), 5);
}

TEST(WorkerNursery, ofAHelperEndsItWithItsWorkers) {
    runIsolated([] {
        ASSERT_TRUE(adoptsOrphans());
        std::unique_ptr<WorkerProcess> worker;
        {
            const WorkerNursery nursery{std::string(KESTRINE_TESTS_WORKER)};
            worker = startWorker();
        }
        EXPECT_GT(::wait(nullptr), 0); // the worker
        EXPECT_EQ(::wait(nullptr), -1);
    });
}

} // namespace
} // namespace kestrine
