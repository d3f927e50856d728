#include "platform/host/process/Sandbox.h"
#include "tests/platform/host/process/WorkerTesting.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/Sanitizers.h"
#include "tests/support/SystemFeatures.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/syscall.h>

namespace kestrine {
namespace {

using namespace testing;

constexpr int ended = 255; ///< the worker, in place of an answer

/// Something that a worker must not do, and the result: the error of the call, or `ended`.
struct Attempt {
    const char* name;
    Order order;
    int whenRefused; ///< with UnlistedCalls::refused
    int whenFatal;   ///< with UnlistedCalls::fatal
};
void PrintTo(const Attempt& attempt, std::ostream* stream) { *stream << attempt.name; }

struct SandboxDenies : ::testing::TestWithParam<Attempt> {
    void SetUp() override {
        if (!permitsSystemCallFilters())
            GTEST_SKIP() << "this system permits no filter of system calls";
    }
};

TEST_P(SandboxDenies, whatAPictureNeverNeeds) {
    EXPECT_EQ(answerTo(*startWorker(UnlistedCalls::refused), GetParam().order), GetParam().whenRefused);
    EXPECT_EQ(answerTo(*startWorker(UnlistedCalls::fatal), GetParam().order), GetParam().whenFatal);
    EXPECT_EQ(answerTo(*startWorker(UnlistedCalls::asBuilt), GetParam().order), GetParam().whenFatal);
}

INSTANTIATE_TEST_SUITE_P(
    Attempts, SandboxDenies,
    ::testing::Values(Attempt{"openFile", Order::openFile, EACCES, EACCES},
                      Attempt{"examineFile", Order::examineFile, EACCES, EACCES},
                      Attempt{"mapExecutable", Order::mapExecutable, EACCES, EACCES},
                      Attempt{"makeExecutable", Order::makeExecutable, EACCES, EACCES},
                      Attempt{"openSocket", Order::openSocket, ENOSYS, ended},
                      Attempt{"startProgram", Order::startProgram, ENOSYS, ended},
                      Attempt{"forkProcess", Order::forkProcess, ENOSYS, ended},
                      Attempt{"signalParent", Order::signalParent, ENOSYS, ended},
                      Attempt{"signalParentThread", Order::signalParentThread, ENOSYS, ended},
                      Attempt{"traceParent", Order::traceParent, ENOSYS, ended},
#ifdef __x86_64__
                      Attempt{"callX32Interface", Order::callX32Interface, ENOSYS, ended},
                      Attempt{"call32BitInterface", Order::call32BitInterface, ended, ended},
#endif
                      Attempt{"damageMemory", Order::damageMemory, EPERM, EPERM}),
    [](const auto& test) { return test.param.name; });

struct SandboxAllows : ::testing::TestWithParam<Order> {};

TEST_P(SandboxAllows, whatDecodingNeeds) {
    EXPECT_EQ(answerTo(*startWorker(UnlistedCalls::fatal), GetParam()), 0);
}

INSTANTIATE_TEST_SUITE_P(Attempts, SandboxAllows,
                         ::testing::Values(Order::startThread, Order::allocate100MB, Order::readClock,
                                           Order::throwAndCatch, Order::sortMuch, Order::askForProcessors));

TEST(Sandbox, layersAreInForceWhereTheSystemHasThem) {
    const SandboxLayers layers = startWorker()->layers();
    EXPECT_TRUE(layers.limits);
    EXPECT_EQ(layers.landlock, hasLandlock());
    EXPECT_EQ(layers.systemCalls, permitsSystemCallFilters());
}

TEST(Sandbox, refusesMemoryAboveTheLimitAndTheWorkerGoesOn) {
    SKIP_UNDER_SANITIZERS("sanitizers need more address space than the limit");
    const auto worker = startWorker();
    EXPECT_EQ(answerTo(*worker, Order::allocate100GB), ENOMEM);
    EXPECT_EQ(answerTo(*worker, Order::allocate100MB), 0);
}

TEST(Sandbox, theMemoryLimitCountsFromWhatIsInUse) {
    SKIP_UNDER_SANITIZERS("sanitizers need more address space than the limit");
    const auto small = WorkerProcess::start(workerProgram(UnlistedCalls::refused, 50 << 20), 0).take();
    EXPECT_EQ(answerTo(*small, Order::allocate100MB), ENOMEM);
    const auto large = WorkerProcess::start(workerProgram(UnlistedCalls::refused, 150 << 20), 0).take();
    EXPECT_EQ(answerTo(*large, Order::allocate100MB), 0);
}

TEST(Sandbox, theMemoryOfTheParentDoesNotCount) {
    SKIP_UNDER_SANITIZERS("sanitizers need more address space than the limit");
    runIsolated([] {
        ASSERT_NE(::mmap(nullptr, 300 << 20, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0), MAP_FAILED);
        const auto worker = WorkerProcess::start(workerProgram(UnlistedCalls::refused, 150 << 20), 0).take();
        EXPECT_EQ(answerTo(*worker, Order::allocate100MB), 0);
    });
}

TEST(Sandbox, withoutAMemoryLimitTheLayerIsInForceToo) {
    const auto worker = WorkerProcess::start(workerProgram(UnlistedCalls::refused, 0), 0).take();
    EXPECT_TRUE(worker->layers().limits);
    EXPECT_EQ(answerTo(*worker, Order::allocate100MB), 0);
}

/// Runs `steps` in a process in which system calls fail.
void runWithout(std::initializer_list<std::pair<long, int>> failingCalls,
                const std::function<void()>& steps) {
    runIsolated([&] {
        for (const auto& [number, error] : failingCalls)
            if (!failSystemCall(number, error))
                GTEST_SKIP() << "this system permits no filter of system calls";
        steps();
    });
}

TEST(Sandbox, withoutLandlockTheFilterDeniesFiles) {
    for (const int error : {ENOSYS, EOPNOTSUPP, EPERM})
        runWithout({{SYS_landlock_create_ruleset, error}}, [] {
            const auto worker = startWorker();
            EXPECT_EQ(worker->layers(), (SandboxLayers{true, false, true}));
            EXPECT_EQ(answerTo(*worker, Order::openFile), EACCES);
        });
}

TEST(Sandbox, thatLandlockRefusesAtTheLastStepIsNotCalledInForce) {
    runWithout({{SYS_landlock_restrict_self, E2BIG}}, [] {
        EXPECT_EQ(startWorker()->layers(), (SandboxLayers{true, false, true}));
    });
}

TEST(Sandbox, withoutTheFilterLandlockDeniesFiles) {
    if (!hasLandlock())
        GTEST_SKIP() << "this system has no Landlock";
    runWithout({{SYS_seccomp, EPERM}}, [] {
        const auto worker = startWorker();
        EXPECT_EQ(worker->layers(), (SandboxLayers{true, true, false}));
        EXPECT_EQ(answerTo(*worker, Order::openFile), EACCES);
        EXPECT_EQ(answerTo(*worker, Order::examineFile), 0); // which Landlock does not deny
        EXPECT_NE(answerTo(*worker, Order::startProgram), 0);
        EXPECT_NE(answerTo(*worker, Order::traceParent), 0);
    });
}

TEST(Sandbox, withoutBothTheProcessAndItsLimitsRemain) {
    runWithout({{SYS_seccomp, EPERM}, {SYS_landlock_create_ruleset, ENOSYS}}, [] {
        const auto worker = startWorker();
        EXPECT_EQ(worker->layers(), (SandboxLayers{true, false, false}));
        EXPECT_EQ(answerTo(*worker, Order::openFile), 0);
        EXPECT_EQ(answerTo(*worker, Order::abort), ended);
    });
}

TEST(Sandbox, withoutLimitsTheOtherLayersRemain) {
    const bool landlock = hasLandlock();
    runWithout({{SYS_prlimit64, EPERM}}, [landlock] {
        const auto worker = startWorker();
        EXPECT_EQ(worker->layers(), (SandboxLayers{false, landlock, true}));
        EXPECT_EQ(answerTo(*worker, Order::openFile), EACCES);
    });
}

TEST(Sandbox, withoutCloseRangeTheDescriptorsAreClosedOneByOne) {
    runWithout({{SYS_close_range, ENOSYS}}, [] {
        const auto first = startWorker(), second = startWorker();
        EXPECT_EQ(answerTo(*second, Order::countDescriptors), 4);
    });
}

} // namespace
} // namespace kestrine
