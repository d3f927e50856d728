#include "tests/support/IsolatedProcess.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <grp.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <stdexcept>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrine::testing {

namespace {

constexpr int passed = 0, failed = 1, skipped = 77;
constexpr uid_t nobody = 65534;

void require(bool succeeded, const char* what) {
    if (!succeeded)
        throw std::runtime_error(what);
}

/// Gives this process private mounts, as root or in a user namespace. Returns whether that succeeded.
bool separateMounts() {
    const uid_t user = ::geteuid();
    const gid_t group = ::getegid();
    if (::unshare(CLONE_NEWNS) != 0) {
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
            return false;
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << user << " " << user << " 1";
        std::ofstream("/proc/self/gid_map") << group << " " << group << " 1";
    }
    return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

int verdictOf(const std::function<void()>& steps) {
    try {
        steps();
    } catch (const std::exception& exception) {
        ADD_FAILURE() << "exception: " << exception.what();
    }
    std::fflush(nullptr);
    return ::testing::Test::HasFailure() ? failed : ::testing::Test::IsSkipped() ? skipped : passed;
}

} // namespace

void runIsolated(const std::function<void()>& steps) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        ::_exit(verdictOf(steps));
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status)) << "the child ended by signal " << WTERMSIG(status);
    if (WEXITSTATUS(status) == skipped)
        GTEST_SKIP() << "skipped in the child, for the reason above";
    EXPECT_EQ(WEXITSTATUS(status), passed) << "see the failures of the child above";
}

void runAsOrdinaryUser(const std::function<void()>& steps) {
    runIsolated([&] {
        if (::geteuid() == 0)
            require(::setgroups(0, nullptr) == 0 && ::setgid(nobody) == 0 && ::setuid(nobody) == 0,
                    "cannot drop root privileges");
        steps();
    });
}

void runWithOwnMounts(const std::function<void()>& steps) {
    runIsolated([&] {
        if (!separateMounts())
            GTEST_SKIP() << "this system does not permit private mounts";
        steps();
    });
}

void mountFileSystem(const std::string& folder, unsigned kibibytes) {
    const std::string options = "mode=755,size=" + std::to_string(kibibytes) + "k";
    require(::mkdir(folder.c_str(), 0755) == 0, "cannot create the folder to mount on");
    require(::mount("tmpfs", folder.c_str(), "tmpfs", 0, options.c_str()) == 0, "cannot mount a file system");
}

void mountAgain(const std::string& source, const std::string& folder) {
    require(::mkdir(folder.c_str(), 0755) == 0, "cannot create the folder to mount on");
    require(::mount(source.c_str(), folder.c_str(), nullptr, MS_BIND, nullptr) == 0,
            "cannot mount a folder again");
}

bool failSystemCall(long number, int error) {
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(number), 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{std::size(steps), steps};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
           && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

} // namespace kestrine::testing
