#include "platform/host/process/ChildProcess.h"
#include "platform/host/process/StandardStreams.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::runIsolated;
using testing::TemporaryFolder;

ChildEnd endOf(const std::string& program, const std::vector<std::string>& arguments) {
    Result<ChildProcess> child = ChildProcess::start(program, arguments);
    EXPECT_TRUE(child);
    return child ? *child->wait() : ChildEnd{-1, false};
}

TEST(ChildProcess, argumentsArriveExactlyAsGiven) {
    Result<CapturedRun> run = runCapturingOutput(
        "/usr/bin/printf", {"%s|", "two words", "", "$HOME `id` ;", "a\nb", "'\"\\", "*", "\xFF", "-n"},
        1000);
    ASSERT_TRUE(run);
    EXPECT_EQ(run->output, "two words||$HOME `id` ;|a\nb|'\"\\|*|\xFF|-n|");
    EXPECT_EQ(run->end.code, 0);
}

TEST(ChildProcess, theProgramItselfIsTheFirstArgument) {
    Result<CapturedRun> run = runCapturingOutput("/bin/sh", {"-c", "tr '\\0' '|' </proc/$$/cmdline"}, 1000);
    ASSERT_TRUE(run);
    EXPECT_EQ(run->output, "/bin/sh|-c|tr '\\0' '|' </proc/$$/cmdline|");
}

TEST(ChildProcess, exitStatusAndSignalAreDistinguished) {
    const ChildEnd exited = endOf("/bin/sh", {"-c", "exit 7"});
    EXPECT_EQ(exited.code, 7);
    EXPECT_FALSE(exited.bySignal);
    const ChildEnd killed = endOf("/bin/sh", {"-c", "kill -TERM $$"});
    EXPECT_EQ(killed.code, SIGTERM);
    EXPECT_TRUE(killed.bySignal);
}

TEST(ChildProcess, aMissingProgramCannotBeStarted) {
    EXPECT_EQ(ChildProcess::start("/no/such/program", {}).failure().reason, Reason::notFound);
    EXPECT_EQ(ChildProcess::start("", {}).failure().reason, Reason::malformed);
    EXPECT_EQ(ChildProcess::start("/bin/true", {std::string("a\0b", 3)}).failure().reason, Reason::malformed);
}

TEST(ChildProcess, aFileThatIsNotAProgramIsNotPassedToAShell) {
    const TemporaryFolder folder;
    const std::string script = folder.write("script", "exit 0\n");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    EXPECT_FALSE(ChildProcess::start(script, {}));
}

TEST(ChildProcess, aNameWithoutASlashIsLookedUpInPath) {
    runIsolated([] {
        ::setenv("PATH", "/usr/bin:/bin", 1);
        Result<CapturedRun> run = runCapturingOutput("printf", {"found"}, 100);
        ASSERT_TRUE(run);
        EXPECT_EQ(run->output, "found");
        EXPECT_EQ(runCapturingOutput("no-such-program", {}, 10).failure().reason, Reason::notFound);
    });
}

TEST(ChildProcess, theChildInheritsTheStandardStreams) {
    const TemporaryFolder folder;
    runIsolated([&] {
        ASSERT_NE(std::freopen((folder / "out").c_str(), "w", stdout), nullptr);
        EXPECT_EQ(endOf("/bin/echo", {"hello"}).code, 0);
    });
    EXPECT_EQ(testing::readFile(folder / "out"), "hello\n");
}

TEST(ChildProcess, aCapturedProgramHasEmptyInputAndItsErrorsAreDiscarded) {
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

TEST(ChildProcess, aProgramThatWritesMoreThanTheLimitIsKilled) {
    EXPECT_EQ(runCapturingOutput("/usr/bin/printf", {"1234"}, 4)->output, "1234");
    EXPECT_EQ(runCapturingOutput("/usr/bin/printf", {"12345"}, 4).failure().reason, Reason::tooLarge);
    EXPECT_EQ(runCapturingOutput("/usr/bin/yes", {}, 100'000).failure().reason, Reason::tooLarge);
    EXPECT_EQ(runCapturingOutput("/bin/sh", {"-c", "printf 1234; sleep 0.1; printf 5"}, 4).failure().reason,
              Reason::tooLarge);
}

TEST(ChildProcess, ignoredSignalsHaveTheirDefaultActionInTheChild) {
    runIsolated([] {
        prepareStandardStreams();
        for (const char* signal : {"PIPE", "XFSZ"}) {
            const ChildEnd end = endOf("/bin/sh", {"-c", std::string("kill -") + signal + " $$"});
            EXPECT_TRUE(end.bySignal) << signal;
        }
    });
}

TEST(ChildProcess, signalsThatWeBlockAreNotBlockedInTheChild) {
    runIsolated([] {
        sigset_t termination;
        sigemptyset(&termination);
        sigaddset(&termination, SIGTERM);
        ASSERT_EQ(::sigprocmask(SIG_BLOCK, &termination, nullptr), 0);
        const Result<CapturedRun> run = runCapturingOutput("/bin/grep", {"SigBlk", "/proc/self/status"}, 100);
        ASSERT_TRUE(run);
        EXPECT_EQ(run->output, "SigBlk:\t0000000000000000\n");
    });
}

TEST(ChildProcess, capturingWorksWithClosedStandardStreams) {
    runIsolated([] {
        for (const int descriptor : {0, 1, 2})
            ::close(descriptor);
        Result<CapturedRun> run = runCapturingOutput("/usr/bin/printf", {"found"}, 100);
        EXPECT_TRUE(run && run->output == "found");
    });
}

} // namespace
} // namespace kestrine
