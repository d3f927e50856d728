#include "platform/host/process/DiskWait.h"

#include "tests/support/TaskState.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace kestrine {
namespace {

/// A child process that does `work` until it is killed at the end.
class Child {
public:
    template <class Work>
    explicit Child(const Work& work) : number_(::fork()) {
        if (number_ == 0) {
            work();
            ::_exit(0);
        }
    }
    ~Child() {
        ::kill(-number_, SIGKILL);
        ::kill(number_, SIGKILL);
        ::waitpid(number_, nullptr, 0);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t number() const { return number_; }

    /// Whether it waits for a disk within a minute.
    bool waitsWithinAMinute() const {
        for (int attempt = 0; attempt < 6000; ++attempt, ::usleep(10'000))
            if (waitsForDisk(number_))
                return true;
        return false;
    }

private:
    const pid_t number_;
};

/// Waits as for a disk: the system suspends a process until such a child has ended. (The thread sanitizer
/// replaces vfork().)
void waitForAChildThatStays() {
    ::setpgid(0, 0); // so that the child ends with this process
    if (::syscall(SYS_clone, CLONE_VFORK | SIGCHLD, nullptr, nullptr, nullptr, nullptr) == 0)
        for (;;)
            ::pause();
}

TEST(DiskWait, isSeen) { EXPECT_TRUE(Child(waitForAChildThatStays).waitsWithinAMinute()); }

TEST(DiskWait, isSeenInAnyThread) {
    const Child child([] {
        std::thread waiting(waitForAChildThatStays);
        waiting.join();
    });
    EXPECT_TRUE(child.waitsWithinAMinute());
}

TEST(DiskWait, isNotWhatASleepingOrWorkingOrUnknownProcessDoes) {
    const Child sleeping([] { ::pause(); });
    const Child working([] {
        for (const volatile bool isWanted = true; isWanted;) {
        }
    });
    EXPECT_TRUE(testing::comesToState('S', sleeping.number(), sleeping.number()));
    EXPECT_TRUE(testing::comesToState('R', working.number(), working.number()));
    EXPECT_FALSE(waitsForDisk(sleeping.number()));
    EXPECT_FALSE(waitsForDisk(working.number()));
    EXPECT_FALSE(waitsForDisk(0));
}

} // namespace
} // namespace kestrine
