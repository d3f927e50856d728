#include "platform/host/process/StopSignals.h"

#include "tests/support/TaskState.h"

#include <atomic>
#include <gtest/gtest.h>
#include <optional>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace kestrine {

namespace {

constexpr int numbers[] = {SIGINT, SIGTERM, SIGHUP};

/// How a child process that runs `steps` ends: its exit status, or 1000 plus the signal.
template <class Steps>
int endOf(const Steps& steps) {
    const pid_t child = ::fork();
    if (child == 0) {
        for (const int number : numbers)
            (void)std::signal(number, SIG_DFL);
        steps();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

void takeTwoSignalsOnAnotherThread() {
    std::thread([] {
        const sigset_t none{};
        ::pthread_sigmask(SIG_SETMASK, &none, nullptr);
        std::raise(SIGTERM);
        std::raise(SIGHUP);
    }).join();
}

} // namespace

TEST(StopSignalsBlocked, takeEffectAtTheEndOfTheScope) {
    for (const int number : numbers)
        EXPECT_EQ(endOf([&] {
                      {
                          const StopSignalsBlocked scope;
                          std::raise(number);
                      }
                      ::_exit(7);
                  }),
                  1000 + number);
}

TEST(StopSignalsBlocked, doNotEndTheProcessWithinTheScopeButOthersDo) {
    EXPECT_EQ(endOf([] {
                  const StopSignalsBlocked scope;
                  std::raise(SIGINT);
                  ::_exit(7);
              }),
              7);
    EXPECT_EQ(endOf([] {
                  const StopSignalsBlocked scope;
                  std::raise(SIGUSR1);
              }),
              1000 + SIGUSR1);
}

TEST(StopSignalsBlocked, stayBlockedAfterAnInnerScope) {
    EXPECT_EQ(endOf([] {
                  const StopSignalsBlocked outer;
                  { const StopSignalsBlocked inner; }
                  std::raise(SIGTERM);
                  ::_exit(7);
              }),
              7);
}

TEST(StopSignalsNoted, theFirstIsRecordedAndTheSecondEndsTheProcess) {
    for (const int number : numbers) {
        EXPECT_EQ(endOf([&] {
                      const StopSignalsNoted scope;
                      std::raise(number);
                      ::_exit(StopSignalsNoted::noted());
                  }),
                  number);
        EXPECT_EQ(endOf([&] {
                      const StopSignalsNoted scope;
                      std::raise(SIGTERM);
                      std::raise(number);
                  }),
                  128 + number);
    }
}

TEST(StopSignalsNoted, aSecondSignalToAnotherThreadWaitsForProtectedSteps) {
    EXPECT_EQ(endOf([] {
                  const StopSignalsNoted scope;
                  {
                      const StopSignalsBlocked step;
                      takeTwoSignalsOnAnotherThread();
                  }
                  ::_exit(7);
              }),
              128 + SIGHUP);
    EXPECT_EQ(endOf([] {
                  const StopSignalsNoted scope;
                  const StopSignalsBlocked step;
                  takeTwoSignalsOnAnotherThread();
                  ::_exit(7); // reached within the step
              }),
              7);
}

TEST(StopSignalsNoted, afterASecondSignalNoOtherStepBegins) {
    EXPECT_EQ(endOf([] {
                  const StopSignalsNoted scope;
                  std::optional<StopSignalsBlocked> step(std::in_place);
                  takeTwoSignalsOnAnotherThread();
                  std::atomic<pid_t> thread = 0;
                  std::thread([&thread] {
                      sigset_t none{};
                      ::pthread_sigmask(SIG_SETMASK, &none, nullptr);
                      thread = ::gettid();
                      thread.notify_one();
                      const StopSignalsBlocked other;
                      ::_exit(7);
                  }).detach();
                  thread.wait(0);
                  if (!testing::comesToState('S', ::getpid(), thread)) // it waits for the step to end
                      ::_exit(8);
                  step.reset();
              }),
              128 + SIGHUP);
}

TEST(StopSignalsNoted, endTheProcessAgainAfterTheScope) {
    EXPECT_EQ(endOf([] {
                  { const StopSignalsNoted scope; }
                  std::raise(SIGINT);
              }),
              1000 + SIGINT);
}

TEST(StopSignalsNoted, anIgnoredSignalStaysIgnored) {
    EXPECT_EQ(endOf([] {
                  (void)std::signal(SIGHUP, SIG_IGN);
                  {
                      const StopSignalsNoted scope;
                      std::raise(SIGHUP);
                      if (StopSignalsNoted::noted() != 0)
                          ::_exit(1);
                  }
                  std::raise(SIGHUP);
                  ::_exit(7);
              }),
              7);
}

TEST(StopSignals, haveNames) {
    EXPECT_STREQ(nameOfStopSignal(SIGINT), "SIGINT");
    EXPECT_STREQ(nameOfStopSignal(SIGHUP), "SIGHUP");
    EXPECT_STREQ(nameOfStopSignal(SIGUSR1), "");
}

} // namespace kestrine
