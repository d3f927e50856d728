#include "platform/host/process/CapturedRun.h"
#include "platform/host/process/StandardStreams.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::runIsolated;
using testing::TemporaryFolder;

/// The output of a shell script and how it ended, or the message of the failure to run it.
std::string outputOf(const std::string& script, const EnvironmentChanges& changes = {}) {
    const Result<CapturedRun> run = runCapturingOutput("/bin/sh", {"-c", script}, 10'000, changes);
    return run ? run->output : run.failure().text;
}

/// Waits until a file has content, and returns it; "" after half a minute.
std::string contentOnceWritten(const std::string& path) {
    std::string content;
    for (int i = 0; i < 3000 && content.empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        content = testing::readFile(path);
    }
    return content;
}

TEST(CapturedRun, argumentsArriveExactlyAsGiven) {
    Result<CapturedRun> run = runCapturingOutput(
        "/usr/bin/printf", {"%s|", "two words", "", "$HOME `id` ;", "a\nb", "'\"\\", "*", "\xFF", "-n"},
        1000);
    ASSERT_TRUE(run);
    EXPECT_EQ(run->output, "two words||$HOME `id` ;|a\nb|'\"\\|*|\xFF|-n|");
    EXPECT_EQ(run->end.code, 0);
}

TEST(CapturedRun, theProgramItselfIsTheFirstArgument) {
    Result<CapturedRun> run = runCapturingOutput("/bin/sh", {"-c", "tr '\\0' '|' </proc/$$/cmdline"}, 1000);
    ASSERT_TRUE(run);
    EXPECT_EQ(run->output, "/bin/sh|-c|tr '\\0' '|' </proc/$$/cmdline|");
}

TEST(CapturedRun, aNameWithoutASlashIsLookedUp) {
    runIsolated([] {
        ::setenv("PATH", "/usr/bin:/bin", 1);
        Result<CapturedRun> run = runCapturingOutput("printf", {"found"}, 100);
        ASSERT_TRUE(run);
        EXPECT_EQ(run->output, "found");
        EXPECT_EQ(runCapturingOutput("no-such-program", {}, 10).failure().reason, Reason::notFound);
    });
}

TEST(CapturedRun, aCapturedProgramHasEmptyInputAndItsErrorOutputIsDiscarded) {
    const TemporaryFolder folder;
    runIsolated([&] {
        ASSERT_NE(std::freopen((folder / "errors").c_str(), "w", stderr), nullptr);
        Result<CapturedRun> run =
            runCapturingOutput("/bin/sh", {"-c", "cat; echo complaint >&2; echo done"}, 100);
        ASSERT_TRUE(run);
        EXPECT_EQ(run->output, "done\n");
    });
    EXPECT_EQ(testing::readFile(folder / "errors"), "");
}

TEST(CapturedRun, outputUpToTheLimitIsKeptAndMoreEndsTheProgram) {
    EXPECT_EQ(runCapturingOutput("/usr/bin/printf", {"1234"}, 4)->output, "1234");
    EXPECT_EQ(runCapturingOutput("/usr/bin/printf", {"12345"}, 4).failure().reason, Reason::tooLarge);
    EXPECT_EQ(runCapturingOutput("/usr/bin/yes", {}, 100'000).failure().reason, Reason::tooLarge);
}

TEST(CapturedRun, aProgramThatWritesTooMuchIsEndedEvenIfItDoesNotNotice) {
    const TemporaryFolder folder;
    EXPECT_EQ(outputOf("trap 'kill $!; echo ended >" + (folder / "ended")
                       + "; exit' TERM; head -c 20000 /dev/zero; sleep 60 & wait"),
              "the program wrote more than 10000 bytes");
    EXPECT_EQ(contentOnceWritten(folder / "ended"), "ended\n");
}

TEST(CapturedRun, isNotDisturbedBySignalsThatThisProcessHandles) {
    runIsolated([] {
        struct sigaction action {};
        action.sa_handler = [](int) {
            static std::atomic<int> signals = 0;
            if (++signals == 4000)
                ::_exit(1);
        };
        ASSERT_EQ(::sigaction(SIGALRM, &action, nullptr), 0);
        const itimerval every5ms{{0, 5000}, {0, 5000}};
        ASSERT_EQ(::setitimer(ITIMER_REAL, &every5ms, nullptr), 0);
        EXPECT_EQ(outputOf("sleep 0.1; echo one; sleep 0.1; echo two"), "one\ntwo\n");
    });
}

TEST(CapturedRun, failsIfTheSupervisorIsKilled) {
    runIsolated([] {
        ::alarm(30);
        EXPECT_EQ(outputOf("kill -KILL $PPID; sleep 0.1"), "cannot find out how /bin/sh ended");
    });
}

TEST(CapturedRun, capturingWorksIfOurStandardStreamsAreClosed) {
    runIsolated([] {
        for (const int descriptor : {0, 1, 2})
            ::close(descriptor);
        Result<CapturedRun> run = runCapturingOutput("/usr/bin/printf", {"found"}, 100);
        EXPECT_TRUE(run && run->output == "found");
    });
}

TEST(CapturedRun, exitStatusesSignalsAndFailuresToStartAreDistinguished) {
    const Result<CapturedRun> exited = runCapturingOutput("/bin/sh", {"-c", "echo last; exit 7"}, 100);
    EXPECT_TRUE(exited && exited->output == "last\n" && exited->end.code == 7 && !exited->end.bySignal);
    const Result<CapturedRun> killed = runCapturingOutput("/bin/sh", {"-c", "kill -TERM $$"}, 100);
    EXPECT_TRUE(killed && killed->end.code == SIGTERM && killed->end.bySignal);
    EXPECT_EQ(runCapturingOutput("/no/such/program", {}, 10).failure().reason, Reason::notFound);
    EXPECT_EQ(runCapturingOutput("/etc/passwd", {}, 10).failure().reason, Reason::notPermitted);
    EXPECT_EQ(runCapturingOutput("", {}, 10).failure().reason, Reason::malformed);
}

TEST(CapturedRun, aFileThatIsNotAProgramIsNotPassedToAShell) {
    const TemporaryFolder folder;
    const std::string script = folder.write("script", "exit 0\n");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    EXPECT_FALSE(runCapturingOutput(script, {}, 10));
}

TEST(CapturedRun, theProgramHasOurVariablesWithTheGivenChanges) {
    runIsolated([] {
        ::setenv("KEPT", "kept", 1);
        ::setenv("CHANGED", "before", 1);
        EXPECT_EQ(outputOf("echo $KEPT $CHANGED $ADDED", {{"CHANGED", "after"}, {"ADDED", "new"}}),
                  "kept after new\n");
        EXPECT_EQ(outputOf("echo $CHANGED"), "before\n");
    });
}

TEST(CapturedRun, theProgramInheritsNoOtherDescriptor) {
    runIsolated([] {
        const int inherited = ::open("/dev/null", O_RDONLY);
        ::dup2(inherited, 40);
        EXPECT_EQ(outputOf("exec ls /proc/self/fd"), "0\n1\n2\n3\n"); // the last one is the listed folder
    });
}

TEST(CapturedRun, theExitStatusIsKnownEvenIfSIGCHLDIsIgnored) {
    runIsolated([] {
        for (const auto handling : {SIG_IGN, SIG_DFL}) {
            std::signal(SIGCHLD, handling);
            const Result<CapturedRun> run = runCapturingOutput("/bin/sh", {"-c", "echo answer; exit 3"}, 100);
            ASSERT_TRUE(run) << run.failure().text;
            EXPECT_EQ(run->output, "answer\n");
            EXPECT_EQ(run->end.code, 3);
        }
    });
}

TEST(CapturedRun, theProgramEndsWithThisProcess) {
    const TemporaryFolder folder;
    const pid_t asking = ::fork();
    if (asking == 0) {
        outputOf("trap 'echo ended >" + (folder / "ended") + "; exit' TERM; echo >" + (folder / "started")
                 + "; sleep 60 & wait");
        ::_exit(0);
    }
    EXPECT_EQ(contentOnceWritten(folder / "started"), "\n");
    ::kill(asking, SIGKILL);
    EXPECT_EQ(contentOnceWritten(folder / "ended"), "ended\n");
}

} // namespace

TEST(CapturedRun, noSignalIsBlockedInTheProgram) {
    runIsolated([] {
        sigset_t signals;
        ::sigemptyset(&signals);
        ::sigaddset(&signals, SIGTERM);
        ASSERT_EQ(::sigprocmask(SIG_BLOCK, &signals, nullptr), 0);
        const Result<CapturedRun> run = runCapturingOutput("/bin/grep", {"SigBlk", "/proc/self/status"}, 100);
        ASSERT_TRUE(run);
        EXPECT_EQ(run->output, "SigBlk:\t0000000000000000\n");
    });
}

} // namespace kestrine
